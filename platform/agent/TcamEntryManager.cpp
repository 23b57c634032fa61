// The entry manager's group, the life of its entries in hardware and its
// per-unit records. In-port and port-class binding is in TcamEntryPorts.cpp.
#include <utility>

#include "platform/agent/TcamEntryManager.h"
#include "platform/sdk/Shim.h"

namespace {

// The VLAN stage classifies packets before any lookup, so it sees only what the
// parser gives it.
constexpr bcm_field_qualify_t lookupQualifiers[] = {
   bcmFieldQualifyDstMac,     bcmFieldQualifyEtherType,  bcmFieldQualifyIpType,
   bcmFieldQualifyDstIp,      bcmFieldQualifyDstIp6,     bcmFieldQualifyIpProtocol,
   bcmFieldQualifyL4SrcPort,  bcmFieldQualifyL4DstPort,  bcmFieldQualifyInPorts,
};

template <size_t N>
void addAll( bcm_field_qset_t& qset, const bcm_field_qualify_t ( &qualifiers )[ N ] ) {
   for ( bcm_field_qualify_t q : qualifiers ) {
      BCM_FIELD_QSET_ADD( qset, q );
   }
}

}  // namespace

const TcamEntryBcmPbmp* InternalUnitEntry::tcamEntryBcmPbmp( U32 entry ) const {
   auto it = entries.find( entry );
   if ( it == entries.end() || !it->second.pbmp ) {
      return nullptr;
   }
   return &*it->second.pbmp;
}

FerroTcamEntryManager::FerroTcamEntryManager( Lumo::String name,
                                              bcm_field_stage_t stage,
                                              bcm_field_group_t groupId,
                                              int groupPriority, bool supportsAclGroup )
      : name_( std::move( name ) ), stage_( stage ), groupId_( groupId ),
        groupPriority_( groupPriority ), supportsAclGroup_( supportsAclGroup ) {}

int FerroTcamEntryManager::unitIs( U32 unit, const FerroCentral::ChipAttributes& chip ) {
   bcm_field_qset_t qset;
   BCM_FIELD_QSET_INIT( qset );
   switch ( stage_ ) {
      case bcmFieldStageIngress:
         BCM_FIELD_QSET_ADD( qset, bcmFieldQualifyStageIngress );
         // Every field the chip has, after the stage pseudo-qualifiers; port
         // classes only where the manager binds rules by them, the others
         // bind by in-port bitmap.
         for ( int q = bcmFieldQualifyInPorts; q < bcmFieldQualifyCount; ++q ) {
            if ( q != bcmFieldQualifyInterfaceClassPort || supportsAclGroup_ ) {
               BCM_FIELD_QSET_ADD( qset, q );
            }
         }
         break;
      case bcmFieldStageLookup:
         BCM_FIELD_QSET_ADD( qset, bcmFieldQualifyStageLookup );
         addAll( qset, lookupQualifiers );
         break;
   }
   // A group asking for a qualifier the chip lacks is refused as a whole, so
   // leave out what the chip does not have; the rules check the same
   // attribute before they use it. Every chip has the destination L3 class
   // field (multicast routes with the CPU as an outgoing interface set it);
   // dstClassL3Supported only says whether unicast lookups fill it too.
   if ( !chip.extensionHeaderTypeQualifierSupported ) {
      BCM_FIELD_QSET_REMOVE( qset, bcmFieldQualifyExtensionHeaderType );
   }
   return Shim::sdk_->bcm_field_group_create_id( unit, qset, groupPriority_, groupId_ );
}

int FerroTcamEntryManager::installEntry( U32 unit, U32 entry ) {
   return Shim::sdk_->bcm_field_entry_install( unit, entry );
}

int FerroTcamEntryManager::reinstallEntry( U32 unit, U32 entry ) {
   return Shim::sdk_->bcm_field_entry_reinstall( unit, entry );
}

int FerroTcamEntryManager::enableEntry( U32 unit, U32 entry, bool enable, int status ) {
   // The status names what is being switched; the entry's enable state is the
   // only one this manager offers.
   if ( status != int( BCM_FIELD_ENTRY_ENABLE_STATUS ) ) {
      return BCM_E_PARAM;
   }
   return Shim::sdk_->bcm_field_entry_enable_set( unit, entry, enable ? 1 : 0 );
}

int FerroTcamEntryManager::removeEntry( U32 unit, U32 entry ) {
   // Only the hardware copy goes: the entry keeps its id, its software copy
   // and its record, ready to be reprogrammed and installed again.
   return Shim::sdk_->bcm_field_entry_remove( unit, entry );
}

U32 FerroTcamEntryManager::getHardwareEntryId( U32, U32 entry, U32, U8 ) const {
   return entry;
}

const TcamEntryRecord* FerroTcamEntryManager::record( U32 unit, U32 entry ) const {
   auto u = units_.find( unit );
   if ( u == units_.end() || !u->second ) {
      return nullptr;
   }
   auto e = u->second->entries.find( entry );
   return e == u->second->entries.end() ? nullptr : &e->second;
}

TcamEntryRecord& FerroTcamEntryManager::recordIs( U32 unit, U32 entry ) {
   Lumo::Ptr<InternalUnitEntry>& u = units_[ unit ];
   if ( !u ) {
      u = Lumo::makePtr<InternalUnitEntry>();
   }
   return u->entries[ entry ];
}
