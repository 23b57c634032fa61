// ARP and the layer-2 control protocols that have an ether type of their own:
// slow protocols (LACP, marker, OAM), LLDP and EAPoL.
#include "pipeline/ParserContext.h"

namespace Pipeline::detail {

namespace {

constexpr size_t kArpHeader = 8;        // hardware/protocol types and sizes, opcode
constexpr size_t kEthIpv4ArpAddresses = 20;
constexpr size_t kSlowHeader = 2;       // subtype, version
constexpr size_t kEapolHeader = 4;      // version, type, body length

void parseSlowProtocol( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::SlowProtocol, "slow protocol header", offset, kSlowHeader, end ) ) {
      return;
   }
   p.out().slowProtocolSubtype = p.u8( offset );
   p.found( Layer::SlowProtocol, offset, kSlowHeader );
}

void parseEapol( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Eapol, "EAPoL header", offset, kEapolHeader, end ) ) {
      return;
   }
   p.out().eapolType = p.u8( offset + 1 );
   p.found( Layer::Eapol, offset, kEapolHeader );
   size_t body = p.u16( offset + 2 );
   p.fits( Layer::Eapol, "EAPoL body", offset + kEapolHeader, body, end );
}

}  // namespace

void parseArp( ParserContext& p, size_t offset, size_t end ) {
   if ( !p.fits( Layer::Arp, "ARP header", offset, kArpHeader, end ) ) {
      return;
   }
   ArpFacts arp{ p.u16( offset + 6 ), {}, {}, {}, {} };
   p.found( Layer::Arp, offset, kArpHeader );
   bool ethernetIpv4 = p.u16( offset ) == 1 && p.u16( offset + 2 ) == 0x0800 &&
                       p.u8( offset + 4 ) == 6 && p.u8( offset + 5 ) == 4;
   size_t addresses = offset + kArpHeader;
   if ( ethernetIpv4 &&
        p.fits( Layer::Arp, "ARP addresses", addresses, kEthIpv4ArpAddresses, end ) ) {
      arp.senderMac = p.bytes<6>( addresses );
      arp.senderIp = p.u32( addresses + 6 );
      arp.targetMac = p.bytes<6>( addresses + 10 );
      arp.targetIp = p.u32( addresses + 16 );
   }
   p.out().arp = arp;
}

void parseL2Control( ParserContext& p, uint16_t etherType, size_t offset, size_t end ) {
   switch ( etherType ) {
      case 0x8809:
         parseSlowProtocol( p, offset, end );
         return;
      case 0x88CC:
         // The LLDPDU's TLVs are the agent's business, not the pipeline's.
         p.found( Layer::Lldp, offset, 0 );
         return;
      case 0x888E:
         parseEapol( p, offset, end );
         return;
   }
}

}  // namespace Pipeline::detail
