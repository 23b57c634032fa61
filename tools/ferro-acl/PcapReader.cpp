#include "tools/ferro-acl/PcapReader.h"

#include <pcap/pcap.h>

namespace FerroAcl {

namespace {

// libpcap says "truncated dump file; tried to read 16 header bytes, only got
// 7" (or "truncated pcapng dump file; ..."): the byte counts mean little to
// whoever copied the file, the record does.
bool truncation( const std::string& message ) {
   return message.find( "truncated" ) != std::string::npos;
}

std::string linkTypeName( int linkType ) {
   const char* name = pcap_datalink_val_to_name( linkType );
   const char* description = pcap_datalink_val_to_description( linkType );
   if ( !name ) {
      return std::to_string( linkType );
   }
   return description ? std::string( name ) + " (" + description + ")" : name;
}

}  // namespace

void PcapReader::Close::operator()( pcap* handle ) const {
   pcap_close( handle );
}

Result<PcapReader> PcapReader::open( const std::string& path ) {
   char errors[PCAP_ERRBUF_SIZE] = "";
   pcap_t* handle = pcap_open_offline( path.c_str(), errors );
   if ( !handle ) {
      std::string message = errors;
      if ( message.starts_with( path + ": " ) ) {
         message.erase( 0, path.size() + 2 );
      }
      if ( truncation( message ) ) {
         return Error{ "truncated capture: file header cut short" };
      }
      if ( message == "unknown file format" ) {
         return Error{ "unknown file format, expected a pcap or pcapng capture" };
      }
      return Error{ message };
   }
   PcapReader reader( handle );
   const int linkType = pcap_datalink( handle );
   if ( linkType != DLT_EN10MB ) {
      return Error{ "link type " + linkTypeName( linkType ) + ", expected " +
                    linkTypeName( DLT_EN10MB ) };
   }
   return reader;
}

std::optional<CapturedPacket> PcapReader::next() {
   pcap_pkthdr* header = nullptr;
   const u_char* data = nullptr;
   const int status = pcap_next_ex( handle_.get(), &header, &data );
   if ( status == 1 ) {
      ++packetsRead_;
      return CapturedPacket{ { data, header->caplen }, header->len };
   }
   if ( status == PCAP_ERROR ) {
      const std::string message = pcap_geterr( handle_.get() );
      error_ = truncation( message )
                   ? "truncated capture: packet record " +
                         std::to_string( packetsRead_ + 1 ) + " cut short"
                   : message;
   }
   return std::nullopt;
}

}  // namespace FerroAcl
