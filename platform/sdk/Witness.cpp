// witness(): a packet that hits one entry, constructed from the ternary
// data/mask of the entries, or the reason there is none.
//
// A packet hits entry E when it matches E and none of the entries its group
// looks at before it (H1..Hk, installed and enabled, in lookup order). The
// packet's fields are independent as far as the chip's key goes, so each
// field ("slot") is solved on its own: E's qualifiers on the slot are
// positive constraints (a plain ternary, and for compressed fields a list of
// alternatives of which one must match), and every Hi assigned to the slot
// adds a negative one (the value must miss Hi's qualifiers there). A search
// assigns each Hi to one slot where it can be missed, depth first and in
// lookup order, backtracking within a budget.
//
// Solving a ternary slot picks one alternative of each positive constraint,
// merges them (a conflict rules the pick out), then meets the negatives
// greedily: a negative already missed on a fixed bit costs nothing, otherwise
// one free bit inside its mask is pinned to the opposite of its data. Slots
// whose values are codes (in-port with source module and port class, IP type,
// packet resolution, STP state) are solved by trying every code.
//
// Cost: with k entries before E, q qualifiers each, a alternatives, n
// negatives and w bits per slot (or the unit's p ports for the in-port slot),
// the first descent costs O(k * q * (a * n * w + p)) and backtracking is capped
// at kSearchBudget slot solves per entry; auditing a group of m entries is
// O(m^2 * q * (a * n * w + p)) in the common case. bench/SdkBench.cpp
// (BM_WitnessEveryEntryOfAGroup) measures it: about 0.1 ms a witness in a
// group of 16 entries, 0.5 ms in one of 64, 3 ms in one of 256.
#include <algorithm>
#include <functional>
#include <map>

#include "platform/sdk/SimState.h"

namespace Sim {

namespace {

constexpr int kSearchBudget = 20000;

// A ternary of up to 128 bits, big-endian like the compressed values.
struct Bits {
   std::array<uint8_t, 16> data{};
   std::array<uint8_t, 16> mask{};
};

// The slots: fields of the packet that qualifiers read.
enum class Slot : uint8_t {
   Port,  // inPort and srcModid (InPorts, SrcPort, InterfaceClassPort)
   IpType,
   PacketRes,
   StpState,
   DstIp6,
   Ternary,  // one per word-sized qualifier, keyed by the qualifier
};
struct SlotId {
   Slot slot;
   bcm_field_qualify_t q = bcmFieldQualifyCount;  // Ternary: the qualifier
   bool operator==( const SlotId& ) const = default;
};

// The word-sized qualifiers that share a slot with a compressed field.
SlotId slotOf( bcm_field_qualify_t q ) {
   switch ( q ) {
      case bcmFieldQualifyInPorts:
      case bcmFieldQualifySrcPort:
      case bcmFieldQualifyInterfaceClassPort:
         return { Slot::Port };
      case bcmFieldQualifyIpType:
         return { Slot::IpType };
      case bcmFieldQualifyPacketRes:
         return { Slot::PacketRes };
      case bcmFieldQualifyIngressStpState:
         return { Slot::StpState };
      case bcmFieldQualifyDstIp6:
         return { Slot::DstIp6 };
      default:
         return { Slot::Ternary, q };
   }
}

int slotBytes( const Unit& unit, const SlotId& s ) {
   return s.slot == Slot::DstIp6 ? 16 : fieldBytes( unit, s.q );
}

int slotBits( const Unit& unit, const SlotId& s ) {
   return s.slot == Slot::DstIp6 ? 128 : fieldBits( unit, s.q );
}

Bits wordBits( uint64_t data, uint64_t mask, int bytes ) {
   Bits b;
   for ( int i = bytes - 1; i >= 0; --i, data >>= 8, mask >>= 8 ) {
      b.data[static_cast<size_t>( i )] = uint8_t( data );
      b.mask[static_cast<size_t>( i )] = uint8_t( mask );
   }
   return b;
}

uint64_t wordOf( const std::array<uint8_t, 16>& bytes, int count ) {
   uint64_t value = 0;
   for ( int i = 0; i < count; ++i ) {
      value = ( value << 8 ) | bytes[static_cast<size_t>( i )];
   }
   return value;
}

// What one entry says about one ternary slot: a list of constraints, each a
// list of alternatives of which one must match.
using Alternatives = std::vector<Bits>;
std::vector<Alternatives> slotConstraints( const Unit& unit, const CopyState& copy,
                                           const SlotId& s ) {
   std::vector<Alternatives> out;
   const bcm_field_qualify_t q = s.slot == Slot::DstIp6 ? bcmFieldQualifyDstIp6 : s.q;
   if ( copy.hasPlain( q ) ) {
      if ( s.slot == Slot::DstIp6 ) {
         out.push_back( { Bits{ copy.ip6Data, copy.ip6Mask } } );
      } else {
         out.push_back(
             { wordBits( copy.fields[q].data, copy.fields[q].mask, slotBytes( unit, s ) ) } );
      }
   }
   if ( auto field = compressedFieldOf( q ) ) {
      const auto& values = copy.compressed[static_cast<size_t>( *field )];
      if ( !values.empty() ) {
         Alternatives alts;
         for ( const Shim::CompressedValue& v : values ) {
            alts.push_back( Bits{ v.data.bytes, v.mask.bytes } );
         }
         out.push_back( alts );
      }
   }
   return out;
}

bool bitOf( const std::array<uint8_t, 16>& a, int bit ) { return ( a[bit / 8] >> ( 7 - bit % 8 ) ) & 1; }
void setBit( std::array<uint8_t, 16>& a, int bit, bool value ) {
   const uint8_t m = uint8_t( 1u << ( 7 - bit % 8 ) );
   a[bit / 8] = value ? uint8_t( a[bit / 8] | m ) : uint8_t( a[bit / 8] & ~m );
}

// A value of `bytes` bytes (the top `bits` usable) matching one alternative of
// every positive constraint and none of the ternaries of every negative, or
// nothing.
std::optional<std::array<uint8_t, 16>> solveTernary( const std::vector<Alternatives>& positives,
                                                     const std::vector<Alternatives>& negatives,
                                                     int bytes, int bits ) {
   const int first = bytes * 8 - bits;  // leading bits the field does not have
   std::vector<size_t> pick( positives.size(), 0 );
   for ( ;; ) {
      Bits merged;
      bool conflict = false;
      for ( size_t c = 0; c < positives.size() && !conflict; ++c ) {
         const Bits& alt = positives[c][pick[c]];
         for ( int i = 0; i < bytes; ++i ) {
            const uint8_t both = merged.mask[i] & alt.mask[i];
            conflict |= ( merged.data[i] & both ) != ( alt.data[i] & both );
            merged.data[i] |= alt.data[i] & alt.mask[i];
            merged.mask[i] |= alt.mask[i];
         }
      }
      if ( !conflict ) {
         std::array<uint8_t, 16> value = merged.data;
         std::array<uint8_t, 16> pinned = merged.mask;
         bool met = true;
         for ( const Alternatives& negative : negatives ) {
            for ( const Bits& n : negative ) {
               int missedOn = -1, freeBit = -1;
               for ( int bit = first; bit < bytes * 8 && missedOn < 0; ++bit ) {
                  if ( !bitOf( n.mask, bit ) ) {
                     continue;
                  }
                  if ( bitOf( pinned, bit ) ) {
                     if ( bitOf( value, bit ) != bitOf( n.data, bit ) ) {
                        missedOn = bit;
                     }
                  } else if ( freeBit < 0 ) {
                     freeBit = bit;
                  }
               }
               if ( missedOn >= 0 ) {
                  continue;
               }
               if ( freeBit < 0 ) {
                  met = false;
                  break;
               }
               setBit( value, freeBit, !bitOf( n.data, freeBit ) );
               setBit( pinned, freeBit, true );
            }
            if ( !met ) {
               break;
            }
         }
         if ( met ) {
            return value;
         }
      }
      // The next combination of picks.
      size_t c = 0;
      while ( c < positives.size() && ++pick[c] == positives[c].size() ) {
         pick[c++] = 0;
      }
      if ( c == positives.size() ) {
         return std::nullopt;
      }
   }
}

class Search {
  public:
   Search( const Unit& unit, SdkVersion version, const Entry& target,
           std::vector<const Entry*> before, const PacketFields& start )
       : unit_( unit ),
         version_( version ),
         target_( target ),
         before_( std::move( before ) ),
         packet_( start ) {}

   WitnessResult run() {
      WitnessResult result;
      for ( const SlotId& s : slotsOf( target_.hardware ) ) {
         if ( !solve( s, packet_ ) ) {
            result.contradictions.push_back( describe( s ) );
         }
      }
      if ( !result.contradictions.empty() ) {
         return result;
      }
      if ( descend( 0 ) ) {
         for ( const SlotId& s : touched() ) {
            solve( s, packet_ );
         }
         result.packet = packet_;
         return result;
      }
      // Name the entries that leave no packet on their own, else the one the
      // search stopped at.
      for ( const Entry* h : before_ ) {
         assigned_.clear();
         if ( !missable( *h ) ) {
            result.shadowers.push_back( h->id );
         }
      }
      if ( result.shadowers.empty() ) {
         result.shadowers.push_back( before_[deepest_]->id );
      }
      return result;
   }

  private:
   std::vector<SlotId> slotsOf( const CopyState& copy ) {
      std::vector<SlotId> slots;
      for ( bcm_field_qualify_t q : qualifiersOf( copy ) ) {
         const SlotId s = slotOf( q );
         if ( std::find( slots.begin(), slots.end(), s ) == slots.end() ) {
            slots.push_back( s );
         }
      }
      return slots;
   }

   std::vector<SlotId> touched() {
      std::vector<SlotId> slots = slotsOf( target_.hardware );
      for ( const auto& [s, h] : assigned_ ) {
         if ( std::find( slots.begin(), slots.end(), s ) == slots.end() ) {
            slots.push_back( s );
         }
      }
      return slots;
   }

   std::string describe( const SlotId& s ) {
      std::string names;
      for ( bcm_field_qualify_t q : qualifiersOf( target_.hardware ) ) {
         if ( slotOf( q ) == s ) {
            names += ( names.empty() ? "" : " and " ) + std::string( FieldProcessor::qualifierName( q ) );
         }
      }
      return names;
   }

   std::vector<const Entry*> negativesOn( const SlotId& s ) const {
      std::vector<const Entry*> out;
      for ( const auto& [slot, h] : assigned_ ) {
         if ( slot == s ) {
            out.push_back( h );
         }
      }
      return out;
   }

   // The qualifiers of an entry's hardware copy, in the order qualified, kept
   // so that the search does not sort them again at every step.
   const std::vector<bcm_field_qualify_t>& qualifiersOf( const CopyState& copy ) {
      auto [it, fresh] = qualifiers_.try_emplace( &copy );
      if ( fresh ) {
         it->second = qualifiersInOrder( copy );
      }
      return it->second;
   }

   // Every qualifier of `copy` on slot s matches the packet whose key is `key`.
   bool matchesOn( const CopyState& copy, const SlotId& s, const PacketKey& key,
                   const PacketFields& p ) {
      for ( bcm_field_qualify_t q : qualifiersOf( copy ) ) {
         if ( !( slotOf( q ) == s ) ) {
            continue;
         }
         const auto field = compressedFieldOf( q );
         if ( ( copy.hasPlain( q ) && !plainMatches( copy, q, key, p, version_ ) ) ||
              ( field && !compressedFieldMatches( copy, *field, p ) ) ) {
            return false;
         }
      }
      return true;
   }

   // Gives slot s of `p` a value that meets the target and misses every entry
   // assigned to s; false when there is none.
   bool solve( const SlotId& s, PacketFields& p ) {
      ++solves_;
      const std::vector<const Entry*> negatives = negativesOn( s );
      if ( s.slot == Slot::Ternary || s.slot == Slot::DstIp6 ) {
         return solveBits( s, negatives, p );
      }
      for ( const std::function<void( PacketFields& )>& set : candidates( s ) ) {
         PacketFields trial = p;
         set( trial );
         const PacketKey key = packetKey( unit_, trial, version_ );
         if ( matchesOn( target_.hardware, s, key, trial ) &&
              std::none_of( negatives.begin(), negatives.end(), [&]( const Entry* h ) {
                 return matchesOn( h->hardware, s, key, trial );
              } ) ) {
            p = trial;
            return true;
         }
      }
      return false;
   }

   bool solveBits( const SlotId& s, const std::vector<const Entry*>& negatives,
                   PacketFields& p ) const {
      const std::vector<Alternatives> positives = slotConstraints( unit_, target_.hardware, s );
      // An entry is missed on the slot when one of its constraints there is:
      // try each way of missing each entry.
      std::vector<std::vector<Alternatives>> ways;
      for ( const Entry* h : negatives ) {
         ways.push_back( slotConstraints( unit_, h->hardware, s ) );
      }
      std::vector<size_t> pick( ways.size(), 0 );
      for ( ;; ) {
         std::vector<Alternatives> avoid;
         for ( size_t i = 0; i < ways.size(); ++i ) {
            avoid.push_back( ways[i][pick[i]] );
         }
         if ( auto value = solveTernary( positives, avoid, slotBytes( unit_, s ),
                                         slotBits( unit_, s ) ) ) {
            store( s, *value, p );
            return true;
         }
         size_t i = 0;
         while ( i < ways.size() && ++pick[i] == ways[i].size() ) {
            pick[i++] = 0;
         }
         if ( i == ways.size() ) {
            return false;
         }
      }
   }

   void store( const SlotId& s, const std::array<uint8_t, 16>& value, PacketFields& p ) const {
      if ( s.slot == Slot::DstIp6 ) {
         p.dstIp6 = value;
         return;
      }
      const uint64_t v = wordOf( value, slotBytes( unit_, s ) );
      switch ( s.q ) {
         case bcmFieldQualifyDstPort:
            p.dstModid = bcm_module_t( v >> 8 );
            p.dstPort = bcm_port_t( v & 0xff );
            break;
         case bcmFieldQualifyDstMac:
            for ( int i = 0; i < 6; ++i ) {
               p.dstMac[static_cast<size_t>( i )] = value[static_cast<size_t>( i )];
            }
            break;
         case bcmFieldQualifyEtherType: p.etherType = uint16_t( v ); break;
         case bcmFieldQualifyDstIp: p.dstIp = uint32_t( v ); break;
         case bcmFieldQualifyIpProtocol: p.ipProtocol = uint8_t( v ); break;
         case bcmFieldQualifyExtensionHeaderType: p.extensionHeaderType = uint8_t( v ); break;
         case bcmFieldQualifyL4SrcPort: p.l4SrcPort = uint16_t( v ); break;
         case bcmFieldQualifyL4DstPort: p.l4DstPort = uint16_t( v ); break;
         case bcmFieldQualifyTtl: p.ttl = uint8_t( v ); break;
         case bcmFieldQualifyDSCP: p.tos = uint8_t( v ); break;
         case bcmFieldQualifyOuterVlanPri: p.outerVlanPri = uint8_t( v ); break;
         case bcmFieldQualifyDrop: p.drop = v != 0; break;
         case bcmFieldQualifyHiGig: p.higig = v != 0; break;
         case bcmFieldQualifyInterfaceClassL2: p.interfaceClassL2 = uint32_t( v ); break;
         case bcmFieldQualifyInterfaceClassVPort: p.interfaceClassVPort = uint32_t( v ); break;
         case bcmFieldQualifyDstClassL2: p.dstClassL2 = uint32_t( v ); break;
         case bcmFieldQualifyDstClassL3: p.dstClassL3 = uint32_t( v ); break;
         case bcmFieldQualifyDstClassField: p.dstClassField = uint32_t( v ); break;
         case bcmFieldQualifyDstL3EgressNextHops: p.dstL3EgressNextHop = uint32_t( v ); break;
         case bcmFieldQualifyL2CacheHit: p.l2CacheHit = v != 0; break;
         case bcmFieldQualifyL3Routable: p.l3Routable = v != 0; break;
         default: break;
      }
   }

   // Every value a code slot can take, as a change to the packet.
   std::vector<std::function<void( PacketFields& )>> candidates( const SlotId& s ) const {
      std::vector<std::function<void( PacketFields& )>> out;
      switch ( s.slot ) {
         case Slot::Port: {
            std::vector<bcm_module_t> modules{ unit_.config.modid };
            for ( const CopyState* c : copies() ) {
               const bcm_module_t m = bcm_module_t( c->fields[bcmFieldQualifySrcPort].data >> 8 );
               if ( c->hasPlain( bcmFieldQualifySrcPort ) &&
                    std::find( modules.begin(), modules.end(), m ) == modules.end() ) {
                  modules.push_back( m );
               }
            }
            for ( bcm_module_t m : modules ) {
               for ( bcm_port_t port = 0; port < unit_.config.portCount; ++port ) {
                  if ( unit_.portValid( port ) ) {
                     out.push_back( [m, port]( PacketFields& p ) {
                        p.srcModid = m;
                        p.inPort = port;
                     } );
                  }
               }
            }
            break;
         }
         case Slot::IpType:
            for ( auto t : { Shim::FieldIpType::Ipv4Any, Shim::FieldIpType::Ipv6,
                             Shim::FieldIpType::NonIp } ) {
               out.push_back( [t]( PacketFields& p ) { p.ipType = t; } );
            }
            break;
         case Slot::PacketRes:
            for ( int r = 0; r < static_cast<int>( Shim::PacketRes::Count ); ++r ) {
               out.push_back( [r]( PacketFields& p ) { p.packetRes = Shim::PacketRes( r ); } );
            }
            break;
         case Slot::StpState:
            for ( uint8_t state : { BCM_STG_STP_FORWARD, BCM_STG_STP_BLOCK, BCM_STG_STP_LEARN,
                                    BCM_STG_STP_DISABLE } ) {
               out.push_back( [state]( PacketFields& p ) { p.stpState = state; } );
            }
            break;
         case Slot::DstIp6:
         case Slot::Ternary:
            break;
      }
      return out;
   }

   std::vector<const CopyState*> copies() const {
      std::vector<const CopyState*> out{ &target_.hardware };
      for ( const Entry* h : before_ ) {
         out.push_back( &h->hardware );
      }
      return out;
   }

   // Entry h can be missed, with what is assigned so far.
   bool missable( const Entry& h ) {
      for ( const SlotId& s : slotsOf( h.hardware ) ) {
         assigned_.push_back( { s, &h } );
         PacketFields trial = packet_;
         if ( solve( s, trial ) ) {
            assigned_.pop_back();
            return true;
         }
         assigned_.pop_back();
      }
      return false;
   }

   bool descend( size_t i ) {
      deepest_ = std::max( deepest_, i );
      if ( i == before_.size() ) {
         return true;
      }
      const Entry& h = *before_[i];
      for ( const SlotId& s : slotsOf( h.hardware ) ) {
         if ( solves_ > kSearchBudget ) {
            return false;
         }
         assigned_.push_back( { s, &h } );
         PacketFields trial = packet_;
         if ( solve( s, trial ) && descend( i + 1 ) ) {
            return true;
         }
         assigned_.pop_back();
      }
      return false;
   }

   const Unit& unit_;
   SdkVersion version_;
   const Entry& target_;
   std::vector<const Entry*> before_;
   std::vector<std::pair<SlotId, const Entry*>> assigned_;
   PacketFields packet_;
   std::map<const CopyState*, std::vector<bcm_field_qualify_t>> qualifiers_;
   size_t deepest_ = 0;
   int solves_ = 0;
};

}  // namespace

WitnessResult FieldProcessor::witness( int unit, bcm_field_entry_t entry ) const {
   std::lock_guard guard( state_->mutex );
   const Unit* u = state_->findUnit( unit );
   const Entry* target = u ? u->findEntry( entry ) : nullptr;
   if ( target == nullptr || !target->installed ) {
      return {};
   }
   std::vector<const Entry*> before;
   for ( const Entry* e : target->group->entries ) {
      if ( e != target && e->installed && e->enabled && entryBefore( *e, *target ) ) {
         before.push_back( e );
      }
   }
   std::sort( before.begin(), before.end(),
              []( const Entry* a, const Entry* b ) { return entryBefore( *a, *b ); } );
   // Fields no entry reads keep what a plain packet from a port of this unit has.
   PacketFields start;
   start.srcModid = u->config.modid;
   start.dstModid = u->config.modid;
   return Search( *u, state_->version, *target, before, start ).run();
}

}  // namespace Sim
