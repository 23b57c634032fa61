#include "platform/agent/FerroCommon.h"

namespace FerroCommon {

const FerroL2ProtocolFwdInfo* FerroL2ProtocolFwd::info(
   Lamo::L2Pt::L2PtProtocol protocol ) const {
   auto it = fwdInfo.find( static_cast<U8>( protocol ) );
   return it == fwdInfo.end() ? nullptr : &it->second;
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
