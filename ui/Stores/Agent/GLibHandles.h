#pragma once

#include "Shared/Owners.h"

#include <string>

namespace Stores {

// Lets a function of GLib fill in an owner: f(..., Out(error)).
template <class Pointer>
class Out {
 public:
  explicit Out(Pointer& owner) : owner_(owner) {}
  ~Out() { owner_.reset(filled_); }
  Out(const Out&) = delete;
  Out& operator=(const Out&) = delete;

  operator typename Pointer::pointer *() { return &filled_; }

 private:
  Pointer& owner_;
  typename Pointer::pointer filled_ = nullptr;
};

// A copy of a text of GLib, which is given back.
[[nodiscard]] inline std::string Taken(char* text) {
  const Windows::TextPtr owner(text);
  return owner ? std::string(owner.get()) : std::string();
}

}  // namespace Stores
