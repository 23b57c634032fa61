// Creation of registered types by name. A module registers a factory per type;
// the agent creates an object by type name under a directory, optionally with
// further constructor arguments. A factory that is handed arguments it does not
// take raises WrongCreationArguments and creates nothing.
#pragma once

#include <any>
#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "platform/runtime/Containers.h"
#include "platform/runtime/Ptr.h"

namespace Lumo {

// Identity of a reflected type: its module and its index within the module.
struct TypeData {
   const char* module;
   uint32_t index;
   // Modules are compared by name: each shared library has its own copy of a
   // module's name literal.
   bool operator==( const TypeData& other ) const {
      return index == other.index && module && other.module &&
             std::string_view( module ) == other.module;
   }
};

class WrongCreationArguments : public std::invalid_argument {
  public:
   WrongCreationArguments( TypeData type, size_t given );
   TypeData type() const { return type_; }

  private:
   TypeData type_;
};

class UnknownType : public std::out_of_range {
  public:
   explicit UnknownType( const std::string& name );
};

// A named container of created objects.
class Directory : public Node {
  public:
   explicit Directory( String name ) : name_( std::move( name ) ) {}
   const String& name() const { return name_; }
   void entryIs( const String& name, Ptr<Node> node ) { entries_[ name ] = std::move( node ); }
   Ptr<Node> entry( const String& name ) const;
   void entryDel( const String& name ) { entries_.erase( name ); }
   size_t entries() const { return entries_.size(); }

  private:
   String name_;
   HashMap<String, Ptr<Node>> entries_;
};

using CreationArgs = std::vector<std::any>;
using Factory = Ptr<Node> ( * )( const String& name, Directory* directory,
                                 const CreationArgs& extra );

// Counts the objects of one type that exist.
class AllocationTracker {
  public:
   void allocationIs() { live_.fetch_add( 1, std::memory_order_relaxed ); ++total_; }
   void deallocationIs() { live_.fetch_sub( 1, std::memory_order_relaxed ); }
   int64_t live() const { return live_.load( std::memory_order_relaxed ); }
   uint64_t total() const { return total_.load( std::memory_order_relaxed ); }

  private:
   std::atomic<int64_t> live_{ 0 };
   std::atomic<uint64_t> total_{ 0 };
};

class TypeRegistry {
  public:
   static TypeRegistry& instance();

   void typeIs( const String& typeName, TypeData type, Factory factory );
   void typeDel( const String& typeName );
   bool hasType( const String& typeName ) const;

   // Creates `typeName` named `name`; the new object is also entered in
   // `directory` when one is given. Throws UnknownType or whatever the factory
   // raises (WrongCreationArguments for surplus arguments).
   Ptr<Node> create( const String& typeName, const String& name,
                     Directory* directory = nullptr, const CreationArgs& extra = {} );

  private:
   struct Registration {
      TypeData type;
      Factory factory;
   };
   HashMap<String, Registration> types_;
};

}  // namespace Lumo
