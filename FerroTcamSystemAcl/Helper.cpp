#include "FerroTcamSystemAcl/Helper.h"

#include <cassert>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "FerroTcamSystemAcl/LibraryGlobals.h"

namespace FerroTcamSystemAcl {

Lumo::AllocationTracker Helper::memAllocationTracker_;

namespace {

constexpr const char* typeName = "FerroTcamSystemAcl::Helper";

// Registers the Helper with the agent's type runtime while the library is
// loaded, so that the agent can create it by name after dlopen.
struct Registration {
   Registration() {
      Lumo::TypeRegistry::instance().typeIs(
         typeName, { Helper::moduleName, Helper::typeIndex }, &Helper::create );
   }
   ~Registration() { Lumo::TypeRegistry::instance().typeDel( typeName ); }
};
const Registration registration;

}  // namespace

Helper::Helper( const Lumo::String& name ) : HelperBase( name ) {}

Helper::~Helper() {
   beingDestroyedIs( true );
   IpfixPortProgrammerSm::Ptr sm = ipfixPortProgrammerSmDel();
   sm.reset();
   ipfixPortProgrammerSm_.reset();
}

void* Helper::operator new( size_t size ) {
   void* memory = ::operator new( size );
   memAllocationTracker_.allocationIs();
   return memory;
}

void Helper::operator delete( void* p ) {
   memAllocationTracker_.deallocationIs();
   ::operator delete( p );
}

Lumo::Ptr<Lumo::Node> Helper::create( const Lumo::String& name, Lumo::Directory*,
                                      const Lumo::CreationArgs& extra ) {
   if ( !extra.empty() ) {
      throw Lumo::WrongCreationArguments( { moduleName, typeIndex }, extra.size() );
   }
   // A constructor that throws gives the memory back through operator delete,
   // which withdraws the record.
   return Lumo::Ptr<Lumo::Node>( new Helper( name ) );
}

IpfixPortProgrammerSm::Ptr Helper::ipfixPortProgrammerSmIs(
   const HwFlowTracking::Config::Ptr& config, HelperBase* base ) {
   if ( ipfixPortProgrammerSm_ && ipfixPortProgrammerSm_->config() == config &&
        ipfixPortProgrammerSm_->helperBase() == base ) {
      return ipfixPortProgrammerSm_;
   }
   ipfixPortProgrammerSm_.reset();
   ipfixPortProgrammerSm_ = IpfixPortProgrammerSm::IpfixPortProgrammerSmIs( config, base );
   publisher().notify( attrIpfixPortProgrammerSm );
   ipfixPortProgrammerSm_->hasNotificationActiveIs( true );
   return ipfixPortProgrammerSm_;
}

IpfixPortProgrammerSm::Ptr Helper::ipfixPortProgrammerSmDel() {
   IpfixPortProgrammerSm::Ptr sm = std::move( ipfixPortProgrammerSm_ );
   ipfixPortProgrammerSm_.reset();
   if ( !sm ) {
      return sm;
   }
   publisher().notify( attrIpfixPortProgrammerSm );
   sm->hasNotificationActiveIs( false );
   return sm;
}

U8 Helper::model( U16 unit ) const {
   const auto& groupManager = systemAclGroupManager();
   if ( groupManager ) {
      auto it = groupManager->modChipInfo.find( unit );
      if ( it != groupManager->modChipInfo.end() ) {
         return it->second.model;
      }
   }
   return FerroCentral::ChipInfo().model;
}

bool Helper::l2ProtocolFwdSupported() const {
   return FerroCentral::ferroAttributes()->l2ProtocolFwdSupported;
}

FerroTcam::RequestKey Helper::getRequestKeyForProtocol( U32 dstClassId ) const {
   switch ( dstClassId ) {
      case 1:
      case 2:
      case 3:
      case 8:
         return FerroTcam::RequestKey( "PBMP_E_ALL for l2 ctrl group", false );
   }
   assert( 0 && "Invalid classId type" );
   return {};
}

void Helper::qualifyInPorts( int unit, int entry, const bcm_pbmp_t& data,
                             const bcm_pbmp_t& mask, U32 model ) {
   // Every model takes the same in-ports qualification.
   (void)model;
   BCM_CHECK( bcm_field_qualify_InPorts( unit, entry, data, mask ) );
}

FerroCentral::ChipAttributes::PtrConst Helper::chipAttributes( U32 unit ) const {
   const FerroCentral::ChipInfo info =
      smData() ? smData()->chipInfo( unit ) : FerroCentral::ChipInfo();
   return FerroCentral::ferroAttributes()->chipAttributes( info );
}

// These are deliberately inert on these chips: the PTP rules are programmed by
// the ...Common operations, and neither MVRP nor the CoS queue map is
// programmed by the system ACL.
void Helper::doInstallMvrpRule( U16 ) {}
void Helper::doInstallL2McastPTPRule( U16 ) {}
void Helper::doInstallL2UnicastPTPRule( U16 ) {}
void Helper::doInstallIpv4McastPTPRule( U16 ) {}
void Helper::doInstallIpv4UnicastFwdPTPRule( U16 ) {}
void Helper::doInstallIpv4ElevatorPTPRule( U16 ) {}
void Helper::configureCosQueueMap( U16 ) {}
void Helper::configureMvrpTrapToCpuAction( U16, bool ) {}

void Helper::doCollectorDbConfig() { FERRO_TRACE( 2, "Helper::" << "doCollectorDbConfig" ); }

}  // namespace FerroTcamSystemAcl
