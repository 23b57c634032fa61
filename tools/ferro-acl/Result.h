// A value or the one message that says why there is none. The loaders and
// option parsers of ferro-acl return this, so a half-built configuration never
// reaches the code that brings a switch up.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace FerroAcl {

struct Error {
   std::string message;
};

template <typename T>
class Result {
 public:
   Result( T value ) : state_( std::in_place_index<0>, std::move( value ) ) {}
   Result( Error error ) : state_( std::in_place_index<1>, std::move( error ) ) {}

   bool ok() const { return state_.index() == 0; }
   explicit operator bool() const { return ok(); }
   T& value() { return std::get<0>( state_ ); }
   const T& value() const { return std::get<0>( state_ ); }
   const std::string& error() const { return std::get<1>( state_ ).message; }

 private:
   std::variant<T, Error> state_;
};

}  // namespace FerroAcl
