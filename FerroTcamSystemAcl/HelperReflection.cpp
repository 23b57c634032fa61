// The Helper's reflected attribute and callable operations. Ids below the
// Helper's range are HelperBase's.
#include <any>

#include "FerroTcamSystemAcl/Helper.h"

namespace FerroTcamSystemAcl {

namespace {

template <typename T>
bool argIs( const Lumo::ReflectIo& io, size_t i, T* out ) {
   if ( i >= io.args.size() ) {
      return false;
   }
   if ( const T* value = std::any_cast<T>( &io.args[ i ] ) ) {
      *out = *value;
      return true;
   }
   return false;
}

}  // namespace

Lumo::ReflectResult Helper::inspectOperation( Lumo::AttributeId attribute,
                                              Lumo::ReflectAccess access,
                                              Lumo::ReflectIo& io ) {
   using Lumo::ReflectAccess;
   using Lumo::ReflectResult;
   if ( attribute < firstHelperAttribute ) {
      return HelperBase::inspectOperation( attribute, access, io );
   }
   if ( attribute == attrIpfixPortProgrammerSm ) {
      switch ( access ) {
         case ReflectAccess::read:
            io.result = ipfixPortProgrammerSm_;
            return ReflectResult::ok;
         case ReflectAccess::set: {
            HwFlowTracking::Config::Ptr config;
            HelperBase* base = nullptr;
            if ( !argIs( io, 0, &config ) || !argIs( io, 1, &base ) ) {
               return ReflectResult::badArguments;
            }
            io.result = ipfixPortProgrammerSmIs( config, base );
            return ReflectResult::ok;
         }
         case ReflectAccess::del:
            io.result = ipfixPortProgrammerSmDel();
            return ReflectResult::ok;
         case ReflectAccess::call:
            return ReflectResult::accessRefused;
      }
   }
   if ( attribute > attrModel ) {
      return ReflectResult::unknownAttribute;
   }
   if ( access != ReflectAccess::call ) {
      return ReflectResult::accessRefused;
   }
   switch ( static_cast<Attribute>( attribute ) ) {
      case attrInstallL2ControlSystemTcamEntry: {
         U16 unit;
         FerroBoundedTcamEntryManager::Ptr manager;
         int entry;
         Lumo::String name;
         U32 classId, classMask, tc, queue;
         Lamo::L2Pt::L2PtProtocol protocol;
         if ( !argIs( io, 0, &unit ) || !argIs( io, 1, &manager ) || !argIs( io, 2, &entry ) ||
              !argIs( io, 3, &name ) || !argIs( io, 4, &classId ) ||
              !argIs( io, 5, &classMask ) || !argIs( io, 6, &tc ) || !argIs( io, 7, &queue ) ||
              !argIs( io, 8, &protocol ) ) {
            return ReflectResult::badArguments;
         }
         installL2ControlSystemTcamEntry( unit, manager, entry, name, classId, classMask, tc,
                                          queue, protocol );
         return ReflectResult::ok;
      }
      case attrGetRequestKeyForProtocol: {
         U32 protocol;
         if ( !argIs( io, 0, &protocol ) ) {
            return ReflectResult::badArguments;
         }
         io.result = getRequestKeyForProtocol( protocol );
         return ReflectResult::ok;
      }
      case attrTrapViaInPortForEntryInt: {
         U16 unit;
         U32 entry;
         bool enable;
         if ( !argIs( io, 0, &unit ) || !argIs( io, 1, &entry ) || !argIs( io, 2, &enable ) ) {
            return ReflectResult::badArguments;
         }
         trapViaInPortForEntryInt( unit, entry, enable );
         return ReflectResult::ok;
      }
      case attrUpdateInPortsForEntryHelper: {
         U32 unit, entry;
         Wirex::IntfId intf;
         bool enable;
         FerroTcamEntryManager::Ptr manager;
         if ( !argIs( io, 0, &unit ) || !argIs( io, 1, &intf ) || !argIs( io, 2, &enable ) ||
              !argIs( io, 3, &entry ) || !argIs( io, 4, &manager ) ) {
            return ReflectResult::badArguments;
         }
         updateInPortsForEntryHelper( unit, intf, enable, entry, manager );
         return ReflectResult::ok;
      }
      case attrGetPbmpForL2ProfileRule: {
         U32 unit, entry;
         if ( !argIs( io, 0, &unit ) || !argIs( io, 1, &entry ) ) {
            return ReflectResult::badArguments;
         }
         io.result = getPbmpForL2ProfileRule( unit, entry );
         return ReflectResult::ok;
      }
      case attrModel: {
         U16 unit;
         if ( !argIs( io, 0, &unit ) ) {
            return ReflectResult::badArguments;
         }
         io.result = model( unit );
         return ReflectResult::ok;
      }
      case attrIpfixPortProgrammerSm:
         break;
   }
   return ReflectResult::unknownAttribute;
}

}  // namespace FerroTcamSystemAcl
