// A programmer machine's subscription to one configuration publisher. It hands
// every notification to the machine's dispatch, except while the machine tears
// itself down: by then its children and configuration may already be gone, and
// a late reaction would reprogram the rule behind the teardown's back.
#pragma once

#include "platform/runtime/Publisher.h"

namespace FerroTcamSystemAcl {

template <typename Machine, void ( Machine::*dispatch )( const Lumo::Notification& )>
class IpfixSubscription : public Lumo::Reactor {
  public:
   explicit IpfixSubscription( Machine& machine ) : machine_( machine ) {}

   void onAttributeChange( const Lumo::Notification& notification ) override {
      if ( !machine_.beingDestroyed() ) {
         ( machine_.*dispatch )( notification );
      }
   }

  private:
   Machine& machine_;
};

}  // namespace FerroTcamSystemAcl
