#pragma once

#include <memory>

namespace Lifetime {

template <auto Release>
struct Releaser {
  template <class Handle>
  void operator()(Handle* handle) const noexcept {
    Release(handle);
  }
};

// Owns a C library's object, and gives it back by the function that the library has for that. As with
// std::unique_ptr, a null pointer is not given back.
template <class Handle, auto Release>
using UniqueHandle = std::unique_ptr<Handle, Releaser<Release>>;

}  // namespace Lifetime
