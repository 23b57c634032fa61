// Loads libFerroTcamSystemAclHelper.so the way the agent does: dlopen, then
// create the Helper by its type name through the type registry the library
// registered it with while loading. The helper's code lives in the library,
// so the helper must be destroyed before the library is closed; HelperLibrary
// owns both and releases them in that order.
#pragma once

#include <memory>
#include <string>

#include "platform/agent/HelperBase.h"
#include "tools/ferro-acl/Result.h"

namespace FerroAcl {

class HelperLibrary {
 public:
   static constexpr const char* helperTypeName = "FerroTcamSystemAcl::Helper";

   // Loads the library at `path` and creates a helper named `helperName`.
   static Result<std::unique_ptr<HelperLibrary>> open( const std::string& path,
                                                       const std::string& helperName );
   ~HelperLibrary();
   HelperLibrary( const HelperLibrary& ) = delete;
   HelperLibrary& operator=( const HelperLibrary& ) = delete;

   FerroTcamSystemAcl::HelperBase& helper() const { return *helper_; }
   const std::string& path() const { return path_; }

 private:
   HelperLibrary( std::string path, void* handle,
                  FerroTcamSystemAcl::HelperBase::Ptr helper );

   std::string path_;
   void* handle_;
   FerroTcamSystemAcl::HelperBase::Ptr helper_;
};

// <directory of this executable>/../lib/libFerroTcamSystemAclHelper.so: where
// the build and an installation put the library relative to ferro-acl.
std::string defaultHelperLibraryPath();

}  // namespace FerroAcl
