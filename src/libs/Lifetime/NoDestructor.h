#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace Lifetime {

// A process-wide object that is never destroyed: at the end of the process a thread may still use it. Lies
// where it is declared, usually as a static variable of a function, and takes no memory of its own.
template <class Held>
class NoDestructor {
 public:
  template <class... Arguments>
  explicit NoDestructor(Arguments&&... arguments) {
    ::new (static_cast<void*>(storage_)) Held(std::forward<Arguments>(arguments)...);
  }
  NoDestructor(const NoDestructor&) = delete;
  NoDestructor& operator=(const NoDestructor&) = delete;

  Held& operator*() { return *Get(); }
  const Held& operator*() const { return *Get(); }
  Held* operator->() { return Get(); }
  const Held* operator->() const { return Get(); }

 private:
  Held* Get() { return std::launder(reinterpret_cast<Held*>(storage_)); }
  const Held* Get() const { return std::launder(reinterpret_cast<const Held*>(storage_)); }

  alignas(Held) std::byte storage_[sizeof(Held)];
};

}  // namespace Lifetime
