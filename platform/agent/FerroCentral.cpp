#include "platform/agent/FerroCentral.h"

#include <algorithm>

namespace FerroCentral {

bool isBlocked( const ChipInfo& chipInfo, BringupStage stage ) {
   return static_cast<U8>( chipInfo.bringupStage ) < static_cast<U8>( stage );
}

bool ChipAttributes::hasVxlanCoreProtocol( Lamo::L2Pt::L2PtProtocol protocol ) const {
   return std::find( vxlanCoreL2PFSupportedProtocols.begin(),
                     vxlanCoreL2PFSupportedProtocols.end(),
                     protocol ) != vxlanCoreL2PFSupportedProtocols.end();
}

namespace {

// One record shared by every chip the table does not know, so that callers
// always get attributes to read and never a null pointer.
const ChipAttributes::PtrConst& unknownChipAttributes() {
   static const ChipAttributes::PtrConst attributes =
      Lumo::makePtr<ChipAttributes>();
   return attributes;
}

FerroAttributes::PtrConst& currentAttributes() {
   static FerroAttributes::PtrConst attributes;
   return attributes;
}

}  // namespace

ChipAttributes::PtrConst FerroAttributes::chipAttributes(
   const ChipInfo& chipInfo ) const {
   auto it = chips_.find( chipInfo.chipName );
   if ( it == chips_.end() || !it->second ) {
      return unknownChipAttributes();
   }
   return it->second;
}

void FerroAttributes::chipAttributesIs( const Lumo::String& chipName,
                                        ChipAttributes::PtrConst attributes ) {
   if ( attributes ) {
      chips_[ chipName ] = attributes;
   } else {
      chips_.erase( chipName );
   }
}

FerroAttributes::PtrConst ferroAttributes() {
   // Before the platform has published its attributes, answer with an empty
   // platform: every chip then reads as unknown.
   static const FerroAttributes::PtrConst empty = Lumo::makePtr<FerroAttributes>();
   const FerroAttributes::PtrConst& current = currentAttributes();
   return current ? current : empty;
}

void ferroAttributesIs( FerroAttributes::PtrConst attributes ) {
   currentAttributes() = attributes;
}

}  // namespace FerroCentral
