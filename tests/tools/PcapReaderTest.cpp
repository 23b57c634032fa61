// Capture files as ferro-acl classify reads them: both formats, the link
// type check and a file cut short.
#include <gtest/gtest.h>

#include "CaptureFiles.h"
#include "ToolProcess.h"
#include "tools/ferro-acl/PcapReader.h"

using namespace FerroAclTest;
using FerroAcl::PcapReader;

namespace {

const std::vector<Frame> threeFrames = {
    Frame( 60, 0x11 ),
    Frame( 64, 0x22 ),
    Frame( 1514, 0x33 ),
};

// Every packet's bytes and original length, then the reader's error.
struct ReadBack {
   std::vector<Frame> frames;
   std::vector<uint32_t> originalLengths;
   std::string error;
};

ReadBack readAll( const std::string& content ) {
   const std::string path = writeTempFile( "capture", content );
   FerroAcl::Result<PcapReader> reader = PcapReader::open( path );
   EXPECT_TRUE( reader ) << reader.error();
   ReadBack back;
   if ( reader ) {
      while ( auto packet = reader.value().next() ) {
         back.frames.emplace_back( packet->bytes.begin(), packet->bytes.end() );
         back.originalLengths.push_back( packet->originalLength );
      }
      back.error = reader.value().error();
      EXPECT_EQ( reader.value().packetsRead(), back.frames.size() );
   }
   takeFile( path );
   return back;
}

std::string openError( const std::string& content ) {
   const std::string path = writeTempFile( "capture", content );
   FerroAcl::Result<PcapReader> reader = PcapReader::open( path );
   takeFile( path );
   return reader ? "" : reader.error();
}

TEST( PcapReader, ReadsEveryPacketOfAPcapInOrder ) {
   const ReadBack back = readAll( pcapCapture( threeFrames ) );
   EXPECT_EQ( back.frames, threeFrames );
   EXPECT_EQ( back.originalLengths, ( std::vector<uint32_t>{ 60, 64, 1514 } ) );
   EXPECT_EQ( back.error, "" );
}

TEST( PcapReader, ReadsEveryPacketOfAPcapngInOrder ) {
   const ReadBack back = readAll( pcapngCapture( threeFrames ) );
   EXPECT_EQ( back.frames, threeFrames );
   EXPECT_EQ( back.originalLengths, ( std::vector<uint32_t>{ 60, 64, 1514 } ) );
   EXPECT_EQ( back.error, "" );
}

TEST( PcapReader, ASnappedPacketKeepsItsLengthOnTheWire ) {
   const ReadBack back = readAll( pcapCapture( threeFrames, linkTypeEthernet, 100 ) );
   EXPECT_EQ( back.frames, threeFrames );
   EXPECT_EQ( back.originalLengths, ( std::vector<uint32_t>{ 160, 164, 1614 } ) );
}

TEST( PcapReader, AnEmptyCaptureHasNoPackets ) {
   const ReadBack back = readAll( pcapCapture( {} ) );
   EXPECT_TRUE( back.frames.empty() );
   EXPECT_EQ( back.error, "" );
}

TEST( PcapReader, RefusesALinkTypeOtherThanEthernetByName ) {
   EXPECT_EQ( openError( pcapCapture( threeFrames, linkTypeLinuxSll ) ),
              "link type LINUX_SLL (Linux cooked v1), expected EN10MB (Ethernet)" );
   EXPECT_EQ( openError( pcapngCapture( threeFrames, linkTypeLinuxSll ) ),
              "link type LINUX_SLL (Linux cooked v1), expected EN10MB (Ethernet)" );
}

TEST( PcapReader, ReportsATruncatedRecordAfterThePacketsBeforeIt ) {
   for ( const auto& [format, capture] :
         { std::pair{ "pcap", pcapCapture( threeFrames ) },
           std::pair{ "pcapng", pcapngCapture( threeFrames ) } } ) {
      SCOPED_TRACE( format );
      const ReadBack back = readAll( capture.substr( 0, capture.size() - 100 ) );
      EXPECT_EQ( back.frames,
                 std::vector<Frame>( threeFrames.begin(), threeFrames.begin() + 2 ) );
      EXPECT_EQ( back.error, "truncated capture: packet record 3 cut short" );
   }
}

TEST( PcapReader, ReportsARecordHeaderCutShort ) {
   // The first record complete, then 7 bytes of the second record's header.
   const std::string capture = pcapCapture( threeFrames );
   const ReadBack back = readAll( capture.substr( 0, 24 + 16 + 60 + 7 ) );
   EXPECT_EQ( back.frames, std::vector<Frame>( 1, threeFrames[0] ) );
   EXPECT_EQ( back.error, "truncated capture: packet record 2 cut short" );
}

TEST( PcapReader, RefusesWhatIsNotACapture ) {
   EXPECT_EQ( openError( "" ), "truncated capture: file header cut short" );
   EXPECT_EQ( openError( std::string( 40, 'x' ) ),
              "unknown file format, expected a pcap or pcapng capture" );
   FerroAcl::Result<PcapReader> missing = PcapReader::open( "/nonexistent/capture.pcap" );
   ASSERT_FALSE( missing );
   EXPECT_EQ( missing.error(), "No such file or directory" );
}

}  // namespace
