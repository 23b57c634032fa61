// The packets of a capture file, pcap or pcapng, read with libpcap. Only
// Ethernet captures are accepted: the switch model takes frames as they
// arrive on a front-panel port.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "tools/ferro-acl/Result.h"

struct pcap;

namespace FerroAcl {

struct CapturedPacket {
   std::span<const uint8_t> bytes;  // as captured: fewer than originalLength when snapped
   uint32_t originalLength;         // on the wire
};

class PcapReader {
 public:
   // The error says why `path` is not a readable Ethernet capture (libpcap's
   // text, or the link type by name); it does not repeat the path.
   static Result<PcapReader> open( const std::string& path );

   // The next packet, valid until the next call; nothing at the end of the
   // file or when the file cannot be read further, error() telling which.
   std::optional<CapturedPacket> next();
   // "" at a clean end; "truncated capture: packet record 3 cut short".
   const std::string& error() const { return error_; }
   size_t packetsRead() const { return packetsRead_; }

 private:
   struct Close {
      void operator()( pcap* handle ) const;
   };
   explicit PcapReader( pcap* handle ) : handle_( handle ) {}

   std::unique_ptr<pcap, Close> handle_;
   std::string error_;
   size_t packetsRead_ = 0;
};

}  // namespace FerroAcl
