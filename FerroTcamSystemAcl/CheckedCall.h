// The one path from the library to the SDK. BCM_CHECK( call ) runs an SDK call
// through Shim::sdk_ with the interpreter and activity locks released, aborts
// loudly on a negative return and traces a successful one at level 4 of
// "ApiFerro"; BCM_NO_RC_CHECK( call ) is the same without the pre-call hook
// and without looking at the result, for the few removals whose failure is
// expected. The call is written once, as the SDK spells it, and its text is
// the preprocessor's string of it: a compile-time literal, so nothing is
// formatted or allocated while level 4 is off.
#pragma once

#include <cassert>

#include "FerroTcamSystemAcl/OperationContext.h"
#include "platform/runtime/ActivityLock.h"
#include "platform/runtime/Trace.h"
#include "platform/sdk/Shim.h"

namespace FerroTcamSystemAcl {

// "ApiFerro": created when the library is loaded.
extern Lumo::TraceHandle* apiFerroTrace;

struct CallSite {
   const char* file;
   int line;
   const char* function;         // __func__, attached to the trace line
   const char* prettyFunction;   // __PRETTY_FUNCTION__, named by the assertion
   const char* text;             // the call as written
};

// Writes the error line, calls the failure hook and fails the assertion "0".
[[noreturn]] void sdkCallFailed( const CallSite& site, int rc );
void traceSdkCall( const CallSite& site, int rc );
void traceSdkCallNoRcCheck( const CallSite& site );

template <typename Call>
inline int checkedSdkCall( const CallSite& site, Call&& call ) {
   Shim::sdk_->preCallHook();
   int rc;
   {
      // Released in this order and taken back in the reverse one when the
      // anchors go out of scope, before rc is looked at (also on a throw).
      Kel::MaybeGilUnlockAnchor gil;
      Kel::UnlockAnchor activity( Kel::activityLock() );
      rc = call();
   }
   if ( rc < 0 ) {
      sdkCallFailed( site, rc );
   }
   if ( apiFerroTrace->enabled( 4 ) ) {
      traceSdkCall( site, rc );
   }
   return rc;
}

template <typename Call>
inline void uncheckedSdkCall( const CallSite& site, Call&& call ) {
   {
      Kel::MaybeGilUnlockAnchor gil;
      Kel::UnlockAnchor activity( Kel::activityLock() );
      call();
   }
   if ( apiFerroTrace->enabled( 4 ) ) {
      traceSdkCallNoRcCheck( site );
   }
}

}  // namespace FerroTcamSystemAcl

#define FERRO_CALL_SITE( call )                                                      \
   ::FerroTcamSystemAcl::CallSite {                                                  \
      __FILE__, __LINE__, FERRO_FUNCTION_NAME, FERRO_OPERATION_TEXT, #call          \
   }

// assert() that names the operation as above.
#define FERRO_ASSERT( expression )                                                     \
   ( ( expression ) ? void( 0 )                                                       \
                    : __assert_fail( #expression, __FILE__, unsigned( __LINE__ ),      \
                                     FERRO_OPERATION_TEXT ) )

#define BCM_CHECK( call )                                                            \
   ::FerroTcamSystemAcl::checkedSdkCall( FERRO_CALL_SITE( call ),                    \
                                         [ & ]() -> int { return Shim::sdk_->call; } )

#define BCM_NO_RC_CHECK( call )                                                      \
   ::FerroTcamSystemAcl::uncheckedSdkCall( FERRO_CALL_SITE( call ),                  \
                                           [ & ]() { (void)Shim::sdk_->call; } )
