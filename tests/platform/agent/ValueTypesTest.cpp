#include <gtest/gtest.h>

#include <sstream>

#include "platform/agent/FerroCommon.h"

TEST( ValueTypesTest, InterfacesAndAddressesPrintAsTheAgentNamesThem ) {
   std::ostringstream os;
   os << Wirex::IntfId::ethernet( 5 ) << " " << Wirex::IntfId::portChannel( 3 ) << " "
      << Wirex::EthAddr( 0x01, 0x80, 0xC2, 0x00, 0x00, 0x0E );
   EXPECT_EQ( os.str(), "Ethernet5 Port-Channel3 01:80:c2:00:00:0e" );
}

TEST( ValueTypesTest, FirstCpuPortFollowsTheTableOrder ) {
   FerroCommonSmData sm;
   EXPECT_EQ( sm.firstCpuPort(), FerroTypes::FerroPort::invalid() );
   const Wirex::IntfId unmapped( 0x20000009 ), cpu1( 0x20000001 ), cpu0( 0x20000000 );
   sm.cpuPorts[ cpu0 ] = FerroTypes::FerroPort( 0, 0, 0 );
   sm.cpuPorts[ cpu1 ] = FerroTypes::FerroPort( 1, 1, 0 );
   sm.cpuPortOrder = { unmapped, cpu1, cpu0 };
   EXPECT_EQ( sm.firstCpuPort(), FerroTypes::FerroPort( 1, 1, 0 ) );
}
