// The default simulated switch for the tests of the helper frame, with one entry of
// the L3 control group on unit 0 that the tests program directly, as an operation of
// the library would. The "ApiFerro" channel, the trace sink and the simulated chip are
// put back after every test, so that no test sees another's trace or faults.
#pragma once

#include <gtest/gtest.h>

#include "FerroTcamSystemAcl/CheckedCall.h"
#include "platform/agent/SwitchBringup.h"
#include "platform/runtime/Trace.h"
#include "platform/sdk/Simulator.h"

namespace FrameTest {

inline Sim::FieldProcessor& chip() { return Sim::FieldProcessor::instance(); }
inline Lumo::TraceHandle& apiFerro() { return Lumo::traceHandle( "ApiFerro" ); }

class SwitchFixture : public ::testing::Test {
  protected:
   void SetUp() override {
      // FERRO_TRACE in the environment must not decide what a test sees.
      apiFerro().maskIs( 0 );
      sw = Agent::bringUp( Agent::defaultSwitchConfig() );
      const FerroTcam::RequestKey key( "test", false );
      entry = int( sw->l3Manager->getEntry( U32( unit ), Agent::ManagerLayout::l3Base,
                                            "test", key ) );
      ASSERT_NE( entry, 0 );
      chip().clearJournal();
   }
   void TearDown() override {
      Lumo::traceSinkIs( nullptr );
      apiFerro().maskIs( 0 );
      sw.reset();
      chip().reset();
   }

   Agent::Switch::Ptr sw;
   int unit = 0;
   int entry = 0;
};

}  // namespace FrameTest
