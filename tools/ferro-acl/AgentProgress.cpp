#include "tools/ferro-acl/AgentProgress.h"

#include <cstdlib>

namespace FerroAcl {

namespace {

bool startsWith( const std::string& text, const char* prefix, std::string& rest ) {
   const std::string p( prefix );
   if ( text.compare( 0, p.size(), p ) != 0 ) {
      return false;
   }
   rest = text.substr( p.size() );
   return true;
}

}  // namespace

std::string AgentProgress::callMessage( size_t call ) {
   return "call " + std::to_string( call );
}

std::string AgentProgress::doneMessage( size_t call ) {
   return "done " + std::to_string( call );
}

std::string AgentProgress::entryMessage( int unit, int entry, const std::string& name ) {
   return "entry " + std::to_string( unit ) + " " + std::to_string( entry ) + " " + name;
}

std::string AgentProgress::stateMessage( const std::string& json ) {
   return "state " + json;
}

AgentProgress AgentProgress::read( const std::vector<std::string>& messages ) {
   AgentProgress progress;
   for ( const std::string& message : messages ) {
      std::string rest;
      if ( startsWith( message, "call ", rest ) ) {
         progress.running = std::strtoul( rest.c_str(), nullptr, 10 );
      } else if ( startsWith( message, "done ", rest ) ) {
         progress.done.push_back( std::strtoul( rest.c_str(), nullptr, 10 ) );
         progress.running.reset();
      } else if ( startsWith( message, "entry ", rest ) ) {
         char* end = nullptr;
         const int unit = int( std::strtol( rest.c_str(), &end, 10 ) );
         const int entry = int( std::strtol( end, &end, 10 ) );
         progress.entryNames[{ unit, entry }] = *end == ' ' ? end + 1 : end;
      } else if ( startsWith( message, lastCallTag, rest ) ) {
         progress.lastCall = rest;
      } else if ( startsWith( message, "state ", rest ) ) {
         progress.state = rest;
      }
   }
   return progress;
}

}  // namespace FerroAcl
