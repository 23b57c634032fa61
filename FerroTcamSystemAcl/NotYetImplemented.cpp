// Operations whose rule families this build does not program yet. Calling one
// is a wiring mistake of the caller, so it stops the process with the name of
// the operation rather than pretending to have programmed anything.
#include <cstdio>
#include <cstdlib>

#include "FerroTcamSystemAcl/Helper.h"

namespace FerroTcamSystemAcl {

namespace {

[[noreturn]] void notImplemented( const char* function ) {
   std::fprintf( stderr, "%s: not implemented in this build of libFerroTcamSystemAclHelper\n",
                 function );
   std::fflush( stderr );
   std::abort();
}

}  // namespace

#define FERRO_NOT_IMPLEMENTED notImplemented( __PRETTY_FUNCTION__ )

void Helper::doInstallEapolFwdRule( U16 ) { FERRO_NOT_IMPLEMENTED; }
void Helper::updateInPortForClassEntry( U32, Wirex::IntfId, bool,
                                        Lamo::L2Pt::L2PtTrafficType ) {
   FERRO_NOT_IMPLEMENTED;
}
void Helper::updateInPortForEtherType( U32, Wirex::IntfId, bool ) { FERRO_NOT_IMPLEMENTED; }
void Helper::trapViaInPortForClass( U32, bool ) { FERRO_NOT_IMPLEMENTED; }
void Helper::updateL2ProtoFwdRule( U32, U32, Lamo::L2Pt::L2PtProtocol ) {
   FERRO_NOT_IMPLEMENTED;
}
void Helper::updateL2ProtoFwdRules() { FERRO_NOT_IMPLEMENTED; }
void Helper::updateL2PfRule( U32, U32, Wirex::IntfId ) { FERRO_NOT_IMPLEMENTED; }
void Helper::updateNonL2PfRule( U32, U32 ) { FERRO_NOT_IMPLEMENTED; }
void Helper::updatePbmpEAllSystemAclRules( U32, Wirex::IntfId ) { FERRO_NOT_IMPLEMENTED; }
void Helper::updateCopyToCpuCancelLLMcastTcam( U16, bool ) { FERRO_NOT_IMPLEMENTED; }
void Helper::updateEapolDstMac( U32, U32, const Wirex::EthAddr& ) { FERRO_NOT_IMPLEMENTED; }
bcm_pbmp_t Helper::getPbmpForL2ProfileRule( U32, U32 ) { FERRO_NOT_IMPLEMENTED; }
void Helper::updateInPortsForEntryHelper( U32, Wirex::IntfId, bool, U32,
                                          const FerroTcamEntryManager::Ptr& ) {
   FERRO_NOT_IMPLEMENTED;
}

}  // namespace FerroTcamSystemAcl
