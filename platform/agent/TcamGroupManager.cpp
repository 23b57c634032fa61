#include "platform/agent/TcamEntryManager.h"

void FerroTcamGroupManager::managerIs( FerroTcamEntryManager::Ptr manager ) {
   if ( !manager ) {
      return;
   }
   manager->groupManagerIs( this );
   for ( const FerroTcamEntryManager::Ptr& m : managers_ ) {
      if ( m == manager ) {
         return;
      }
   }
   managers_.push_back( manager );
}

FerroTcamEntryManager::Ptr FerroTcamGroupManager::managerForEntry( U32 entry ) const {
   auto it = tcamManagerForEntry_.find( entry );
   return it == tcamManagerForEntry_.end() ? FerroTcamEntryManager::Ptr()
                                           : it->second;
}

void FerroTcamGroupManager::entryManagerIs( U32 entry,
                                            FerroTcamEntryManager::Ptr manager ) {
   if ( manager ) {
      tcamManagerForEntry_[ entry ] = manager;
   } else {
      tcamManagerForEntry_.erase( entry );
   }
}

FerroCentral::ChipAttributes::PtrConst FerroTcamGroupManager::chipAttributes(
   U32 unit ) const {
   // A unit the table does not know reads as an unknown chip: default
   // attributes rather than none.
   auto it = modChipInfo.find( U16( unit ) );
   const FerroCentral::ChipInfo chipInfo =
      it == modChipInfo.end() ? FerroCentral::ChipInfo{} : it->second;
   return FerroCentral::ferroAttributes()->chipAttributes( chipInfo );
}

FerroTcamGroupManager::~FerroTcamGroupManager() {
   for ( const FerroTcamEntryManager::Ptr& m : managers_ ) {
      if ( m->groupManager() == this ) {
         m->groupManagerIs( nullptr );
      }
   }
}
