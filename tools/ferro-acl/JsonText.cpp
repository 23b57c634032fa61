#include "tools/ferro-acl/JsonText.h"

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

namespace FerroAcl {

namespace {

// Follows the parser through the document so that a repeated key can be
// reported by its path ("chips.Trident3.attributes.portCount").
class KeyTracker {
 public:
   bool operator()( int, Json::parse_event_t event, Json& parsed ) {
      switch ( event ) {
         case Json::parse_event_t::object_start:
            elementStarts();
            frames_.emplace_back().isArray = false;
            break;
         case Json::parse_event_t::array_start:
            elementStarts();
            frames_.emplace_back().isArray = true;
            break;
         case Json::parse_event_t::object_end:
         case Json::parse_event_t::array_end:
            frames_.pop_back();
            break;
         case Json::parse_event_t::key: {
            Frame& frame = frames_.back();
            frame.key = parsed.get<std::string>();
            if ( !frame.keys.insert( frame.key ).second && !duplicate_ ) {
               duplicate_ = path();
            }
            break;
         }
         case Json::parse_event_t::value:
            elementStarts();
            break;
      }
      return true;
   }

   const std::optional<std::string>& duplicate() const { return duplicate_; }

 private:
   struct Frame {
      bool isArray = false;
      size_t index = 0;  // arrays: elements started so far
      std::string key;   // objects: the member being read
      std::set<std::string> keys;
   };

   void elementStarts() {
      if ( !frames_.empty() && frames_.back().isArray ) {
         ++frames_.back().index;
      }
   }

   std::string path() const {
      std::string text;
      for ( const Frame& frame : frames_ ) {
         if ( frame.isArray ) {
            text += "[" + std::to_string( frame.index - 1 ) + "]";
         } else {
            text += ( text.empty() ? "" : "." ) + frame.key;
         }
      }
      return text;
   }

   std::vector<Frame> frames_;
   std::optional<std::string> duplicate_;
};

// The parser's text without its own "[json.exception...] parse error at line
// L, column C: " lead-in: the position is given once, in editor form.
std::string parserMessage( const char* what ) {
   const std::string text( what );
   const size_t lead = text.find( "parse error" );
   if ( lead == std::string::npos ) {
      return text;
   }
   const size_t colon = text.find( ": ", lead );
   return colon == std::string::npos ? text : text.substr( colon + 2 );
}

}  // namespace

TextPosition positionOf( std::string_view text, size_t offset ) {
   offset = std::min( offset, text.size() );
   const std::string_view before = text.substr( 0, offset );
   const size_t line = 1 + size_t( std::count( before.begin(), before.end(), '\n' ) );
   const size_t lastNewline = before.rfind( '\n' );
   const size_t column =
       lastNewline == std::string_view::npos ? offset + 1 : offset - lastNewline;
   return TextPosition{ line, column };
}

Result<Json> parseJsonText( std::string_view text, const std::string& source ) {
   KeyTracker tracker;
   Json document;
   try {
      document =
          Json::parse( text.begin(), text.end(),
                       [&tracker]( int depth, Json::parse_event_t event, Json& parsed ) {
                          return tracker( depth, event, parsed );
                       } );
   } catch ( const Json::parse_error& e ) {
      // e.byte counts from 1 and names the character the parser stopped at.
      const TextPosition at = positionOf( text, e.byte == 0 ? 0 : e.byte - 1 );
      return Error{ source + ":" + std::to_string( at.line ) + ":" +
                    std::to_string( at.column ) + ": " + parserMessage( e.what() ) };
   }
   if ( tracker.duplicate() ) {
      return Error{ source + ": " + *tracker.duplicate() + ": key given twice" };
   }
   return document;
}

}  // namespace FerroAcl
