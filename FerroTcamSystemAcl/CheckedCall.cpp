#include "FerroTcamSystemAcl/CheckedCall.h"

#include <cassert>
#include <cstdio>
#include <string>

namespace FerroTcamSystemAcl {

void sdkCallFailed( const CallSite& site, int rc ) {
   std::fprintf( stderr, "%s:%d %s API ERROR:%s (%d)\n", site.file, site.line, site.text,
                 Shim::sdk_->bcm_errmsg( rc ), rc );
   std::fflush( stderr );
   Shim::sdk_->failureHook();
   // The assertion the agent's supervisor recognises: "0", at the call site,
   // in the operation that made the call.
   __assert_fail( "0", site.file, unsigned( site.line ), site.prettyFunction );
}

void traceSdkCall( const CallSite& site, int rc ) {
   std::string text = std::string( site.file ) + ":" + std::to_string( site.line ) + " " +
                      site.text + " (rc:" + std::to_string( rc ) + ")";
   apiFerroTrace->write( 4, site.file, site.line, site.function, text );
}

void traceSdkCallNoRcCheck( const CallSite& site ) {
   std::string text = std::string( site.file ) + ":" + std::to_string( site.line ) + " " +
                      site.text + " no rc check";
   apiFerroTrace->write( 4, site.file, site.line, site.function, text );
}

}  // namespace FerroTcamSystemAcl
