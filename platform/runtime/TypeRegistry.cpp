#include "platform/runtime/TypeRegistry.h"

namespace Lumo {

WrongCreationArguments::WrongCreationArguments( TypeData type, size_t given )
      : std::invalid_argument( "wrong creation arguments for type " +
                               std::string( type.module ) + "/" +
                               std::to_string( type.index ) + ": " +
                               std::to_string( given ) + " further argument(s) given" ),
        type_( type ) {}

UnknownType::UnknownType( const std::string& name )
      : std::out_of_range( "unknown type \"" + name + "\"" ) {}

Ptr<Node> Directory::entry( const String& name ) const {
   auto it = entries_.find( name );
   return it == entries_.end() ? Ptr<Node>() : it->second;
}

TypeRegistry& TypeRegistry::instance() {
   static TypeRegistry registry;
   return registry;
}

void TypeRegistry::typeIs( const String& typeName, TypeData type, Factory factory ) {
   types_[ typeName ] = { type, factory };
}

void TypeRegistry::typeDel( const String& typeName ) { types_.erase( typeName ); }

bool TypeRegistry::hasType( const String& typeName ) const {
   return types_.count( typeName ) != 0;
}

Ptr<Node> TypeRegistry::create( const String& typeName, const String& name,
                                Directory* directory, const CreationArgs& extra ) {
   auto it = types_.find( typeName );
   if ( it == types_.end() ) {
      throw UnknownType( typeName );
   }
   Ptr<Node> node = it->second.factory( name, directory, extra );
   if ( directory && node ) {
      directory->entryIs( name, node );
   }
   return node;
}

}  // namespace Lumo
