#include "tools/ferro-acl/HelperLoader.h"

#include <dlfcn.h>

#include <exception>
#include <filesystem>

#include "platform/runtime/TypeRegistry.h"

namespace FerroAcl {

HelperLibrary::HelperLibrary( std::string path, void* handle,
                              FerroTcamSystemAcl::HelperBase::Ptr helper )
    : path_( std::move( path ) ), handle_( handle ), helper_( std::move( helper ) ) {}

HelperLibrary::~HelperLibrary() {
   helper_.reset();
   ::dlclose( handle_ );
}

Result<std::unique_ptr<HelperLibrary>> HelperLibrary::open(
    const std::string& path, const std::string& helperName ) {
   // RTLD_NOW: a library with an unresolved symbol is refused here, with the
   // symbol named, instead of failing in the middle of an install.
   void* handle = ::dlopen( path.c_str(), RTLD_NOW | RTLD_LOCAL );
   if ( handle == nullptr ) {
      return Error{ "cannot load the helper library: " + std::string( ::dlerror() ) };
   }
   auto fail = [&]( const std::string& problem ) {
      ::dlclose( handle );
      return Error{ path + ": " + problem };
   };
   Lumo::TypeRegistry& registry = Lumo::TypeRegistry::instance();
   if ( !registry.hasType( helperTypeName ) ) {
      return fail( "the library registers no type " + std::string( helperTypeName ) );
   }
   Lumo::Ptr<Lumo::Node> node;
   try {
      node = registry.create( helperTypeName, helperName );
   } catch ( const std::exception& e ) {
      return fail( "creating " + std::string( helperTypeName ) + " failed: " + e.what() );
   }
   auto* helper = dynamic_cast<FerroTcamSystemAcl::HelperBase*>( node.get() );
   if ( helper == nullptr ) {
      node.reset();
      return fail( std::string( helperTypeName ) +
                   " is not a FerroTcamSystemAcl::HelperBase" );
   }
   FerroTcamSystemAcl::HelperBase::Ptr base( helper );
   node.reset();
   return std::unique_ptr<HelperLibrary>(
       new HelperLibrary( path, handle, std::move( base ) ) );
}

std::string defaultHelperLibraryPath() {
   std::error_code error;
   const std::filesystem::path executable =
       std::filesystem::read_symlink( "/proc/self/exe", error );
   const std::filesystem::path directory =
       error ? std::filesystem::path( "." ) : executable.parent_path();
   return ( directory / ".." / "lib" / "libFerroTcamSystemAclHelper.so" )
       .lexically_normal()
       .string();
}

}  // namespace FerroAcl
