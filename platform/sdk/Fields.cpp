// What each qualifier is on this chip: its kind, its width, its SDK name.
#include "platform/sdk/SimState.h"

namespace Sim {

int fieldBits( const Unit& unit, bcm_field_qualify_t q ) {
   switch ( q ) {
      case bcmFieldQualifyStageIngress:
      case bcmFieldQualifyStageLookup:
      case bcmFieldQualifyCount:
         return 0;
      case bcmFieldQualifyInPorts:
         return unit.config.portCount;
      case bcmFieldQualifySrcPort:
      case bcmFieldQualifyDstPort:
         return 16;  // 8-bit module id, 8-bit port
      case bcmFieldQualifyDstMac:
         return 48;
      case bcmFieldQualifyDstIp6:
         return 128;
      case bcmFieldQualifyDstIp:
      case bcmFieldQualifyDstL3EgressNextHops:
      case bcmFieldQualifyPacketRes:
         return 32;
      case bcmFieldQualifyEtherType:
      case bcmFieldQualifyL4SrcPort:
      case bcmFieldQualifyL4DstPort:
         return 16;
      case bcmFieldQualifyIpType:
      case bcmFieldQualifyIpProtocol:
      case bcmFieldQualifyExtensionHeaderType:
      case bcmFieldQualifyTtl:
      case bcmFieldQualifyDSCP:  // the whole TOS byte, ECN bits included
      case bcmFieldQualifyIngressStpState:
         return 8;
      case bcmFieldQualifyOuterVlanPri:
         return 3;
      case bcmFieldQualifyDrop:
      case bcmFieldQualifyHiGig:
      case bcmFieldQualifyL2CacheHit:
      case bcmFieldQualifyL3Routable:
         return 1;
      case bcmFieldQualifyInterfaceClassL2:
      case bcmFieldQualifyInterfaceClassVPort:
      case bcmFieldQualifyInterfaceClassPort:
      case bcmFieldQualifyDstClassL2:
      case bcmFieldQualifyDstClassField:
         return unit.config.classIdBits;
      case bcmFieldQualifyDstClassL3:
         return 10;
   }
   return 0;
}

uint64_t fieldMax( const Unit& unit, bcm_field_qualify_t q ) {
   const int bits = fieldBits( unit, q );
   return bits >= 64 ? ~uint64_t{ 0 } : ( uint64_t{ 1 } << bits ) - 1;
}

int fieldBytes( const Unit& unit, bcm_field_qualify_t q ) {
   return ( fieldBits( unit, q ) + 7 ) / 8;
}

bcm_field_qualify_t sdkQualifier( Shim::CompressedField field ) {
   switch ( field ) {
      case Shim::CompressedField::IpProtocol:
         return bcmFieldQualifyIpProtocol;
      case Shim::CompressedField::L4SrcPort:
         return bcmFieldQualifyL4SrcPort;
      case Shim::CompressedField::L4DstPort:
         return bcmFieldQualifyL4DstPort;
      case Shim::CompressedField::EtherType:
         return bcmFieldQualifyEtherType;
      case Shim::CompressedField::DstIp:
         return bcmFieldQualifyDstIp;
      case Shim::CompressedField::DstIp6:
         return bcmFieldQualifyDstIp6;
      case Shim::CompressedField::DstMac:
         return bcmFieldQualifyDstMac;
      case Shim::CompressedField::Count:
         break;
   }
   return bcmFieldQualifyCount;
}

int compressedBytes( Shim::CompressedField field ) {
   switch ( field ) {
      case Shim::CompressedField::IpProtocol:
         return 1;
      case Shim::CompressedField::L4SrcPort:
      case Shim::CompressedField::L4DstPort:
      case Shim::CompressedField::EtherType:
         return 2;
      case Shim::CompressedField::DstIp:
         return 4;
      case Shim::CompressedField::DstIp6:
         return 16;
      case Shim::CompressedField::DstMac:
         return 6;
      case Shim::CompressedField::Count:
         break;
   }
   return 0;
}

bool groupHas( const Group& group, bcm_field_qualify_t q ) {
   return BCM_FIELD_QSET_TEST( group.qset, q );
}

const char* FieldProcessor::qualifierName( bcm_field_qualify_t q ) {
   switch ( q ) {
      case bcmFieldQualifyStageIngress:
         return "StageIngress";
      case bcmFieldQualifyStageLookup:
         return "StageLookup";
      case bcmFieldQualifyInPorts:
         return "InPorts";
      case bcmFieldQualifySrcPort:
         return "SrcPort";
      case bcmFieldQualifyDstPort:
         return "DstPort";
      case bcmFieldQualifyDstMac:
         return "DstMac";
      case bcmFieldQualifyEtherType:
         return "EtherType";
      case bcmFieldQualifyIpType:
         return "IpType";
      case bcmFieldQualifyDstIp:
         return "DstIp";
      case bcmFieldQualifyDstIp6:
         return "DstIp6";
      case bcmFieldQualifyIpProtocol:
         return "IpProtocol";
      case bcmFieldQualifyExtensionHeaderType:
         return "ExtensionHeaderType";
      case bcmFieldQualifyL4SrcPort:
         return "L4SrcPort";
      case bcmFieldQualifyL4DstPort:
         return "L4DstPort";
      case bcmFieldQualifyTtl:
         return "Ttl";
      case bcmFieldQualifyDSCP:
         return "DSCP";
      case bcmFieldQualifyOuterVlanPri:
         return "OuterVlanPri";
      case bcmFieldQualifyDrop:
         return "Drop";
      case bcmFieldQualifyIngressStpState:
         return "IngressStpState";
      case bcmFieldQualifyHiGig:
         return "HiGig";
      case bcmFieldQualifyInterfaceClassL2:
         return "InterfaceClassL2";
      case bcmFieldQualifyInterfaceClassVPort:
         return "InterfaceClassVPort";
      case bcmFieldQualifyInterfaceClassPort:
         return "InterfaceClassPort";
      case bcmFieldQualifyDstClassL2:
         return "DstClassL2";
      case bcmFieldQualifyDstClassL3:
         return "DstClassL3";
      case bcmFieldQualifyDstClassField:
         return "DstClassField";
      case bcmFieldQualifyDstL3EgressNextHops:
         return "DstL3EgressNextHops";
      case bcmFieldQualifyL2CacheHit:
         return "L2CacheHit";
      case bcmFieldQualifyL3Routable:
         return "L3Routable";
      case bcmFieldQualifyPacketRes:
         return "PacketRes";
      case bcmFieldQualifyCount:
         break;
   }
   return "?";
}

}  // namespace Sim
