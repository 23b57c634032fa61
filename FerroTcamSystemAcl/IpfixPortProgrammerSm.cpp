#include "FerroTcamSystemAcl/IpfixPortProgrammerSm.h"

namespace FerroTcamSystemAcl {

IpfixPortProgrammerSm::Ptr IpfixPortProgrammerSm::IpfixPortProgrammerSmIs(
   const HwFlowTracking::Config::Ptr& config, HelperBase* helperBase ) {
   return Ptr( new IpfixPortProgrammerSm( config, helperBase ) );
}

}  // namespace FerroTcamSystemAcl
