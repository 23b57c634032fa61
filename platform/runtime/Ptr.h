// Reference-counted nodes of the object runtime and the intrusive pointers that
// own them. Counts are atomic read-modify-writes while the runtime runs
// threaded and plain loads and stores otherwise.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace Lumo {

void threadSafeIs( bool threadSafe );
bool threadSafe();

class Node {
  public:
   Node() = default;
   Node( const Node& ) = delete;
   Node& operator=( const Node& ) = delete;
   virtual ~Node() = default;

   void ref() const;
   // Drops one reference; the last one calls lastUserGone().
   void unref() const;
   uint32_t refCount() const { return refs_.load( std::memory_order_relaxed ); }

   // Set while a node tears itself down, so that notifications reaching it
   // during that time can be ignored.
   bool beingDestroyed() const { return beingDestroyed_; }
   void beingDestroyedIs( bool beingDestroyed ) { beingDestroyed_ = beingDestroyed; }

  protected:
   // Called when the last reference is dropped. Deletes the node unless a
   // subclass keeps it alive (for example to recycle it).
   virtual void lastUserGone();

  private:
   mutable std::atomic<uint32_t> refs_{ 0 };
   bool beingDestroyed_ = false;
};

template <typename T>
class Ptr {
  public:
   Ptr() = default;
   Ptr( std::nullptr_t ) {}
   explicit Ptr( T* p ) : p_( p ) { acquire(); }
   Ptr( const Ptr& o ) : p_( o.p_ ) { acquire(); }
   Ptr( Ptr&& o ) noexcept : p_( std::exchange( o.p_, nullptr ) ) {}
   template <typename U>
   Ptr( const Ptr<U>& o ) : p_( o.get() ) { acquire(); }
   ~Ptr() { release(); }

   Ptr& operator=( Ptr o ) noexcept {
      std::swap( p_, o.p_ );
      return *this;
   }
   void reset() { Ptr().swap( *this ); }
   void swap( Ptr& o ) noexcept { std::swap( p_, o.p_ ); }

   T* get() const { return p_; }
   T* operator->() const { return p_; }
   T& operator*() const { return *p_; }
   explicit operator bool() const { return p_ != nullptr; }
   bool operator!() const { return p_ == nullptr; }
   template <typename U>
   bool operator==( const Ptr<U>& o ) const { return p_ == o.get(); }
   bool operator==( std::nullptr_t ) const { return p_ == nullptr; }

  private:
   void acquire() {
      if ( p_ ) {
         p_->ref();
      }
   }
   void release() {
      if ( p_ ) {
         std::exchange( p_, nullptr )->unref();
      }
   }
   T* p_ = nullptr;
};

// A shared pointer through which the node cannot be changed.
template <typename T>
using PtrConst = Ptr<const T>;

template <typename T, typename... Args>
Ptr<T> makePtr( Args&&... args ) {
   return Ptr<T>( new T( std::forward<Args>( args )... ) );
}

}  // namespace Lumo
