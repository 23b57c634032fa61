#include "platform/agent/FerroCommon.h"

namespace FerroCommon {

const FerroL2ProtocolFwdInfo* FerroL2ProtocolFwd::info(
   Lamo::L2Pt::L2PtProtocol protocol ) const {
   auto it = fwdInfo_.find( static_cast<U8>( protocol ) );
   return it == fwdInfo_.end() ? nullptr : &it->second;
}

void FerroL2ProtocolFwd::intfIs( Lamo::L2Pt::L2PtProtocol protocol, Wirex::IntfId intf,
                                 Lamo::L2Pt::L2PtTrafficType trafficType ) {
   auto& types = fwdInfo_[ static_cast<U8>( protocol ) ].intf;
   auto it = types.find( intf );
   if ( it != types.end() && it->second == trafficType ) {
      return;
   }
   types[ intf ] = trafficType;
   publisher_.notify( attrFwdInfo, Lamo::L2Pt::name( protocol ) );
}

void FerroL2ProtocolFwd::intfDel( Lamo::L2Pt::L2PtProtocol protocol, Wirex::IntfId intf ) {
   auto it = fwdInfo_.find( static_cast<U8>( protocol ) );
   if ( it == fwdInfo_.end() || it->second.intf.erase( intf ) == 0 ) {
      return;
   }
   if ( it->second.intf.empty() ) {
      fwdInfo_.erase( it );
   }
   publisher_.notify( attrFwdInfo, Lamo::L2Pt::name( protocol ) );
}

}  // namespace FerroCommon

const FerroModule* FerroCommonSmData::module( U32 unit ) const {
   for ( const FerroModule& m : modules ) {
      if ( m.unit == unit ) {
         return &m;
      }
   }
   return nullptr;
}

FerroCentral::ChipInfo FerroCommonSmData::chipInfo( U32 unit ) const {
   const FerroModule* m = module( unit );
   return m ? m->chipInfo : FerroCentral::ChipInfo{};
}

FerroTypes::FerroPort FerroCommonSmData::firstCpuPort() const {
   // The order names interfaces; an interface whose port is not (or no longer)
   // in the table is passed over rather than reported as the CPU port.
   for ( const Wirex::IntfId& intf : cpuPortOrder ) {
      auto it = cpuPorts.find( intf );
      if ( it != cpuPorts.end() ) {
         return it->second;
      }
   }
   return FerroTypes::FerroPort::invalid();
}
