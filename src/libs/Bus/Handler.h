#pragma once

#include "libs/Bus/Result.h"

#include <memory>

namespace Bus {

// What was made for the handler, or its failure. `setDestroyCallback` is the library's function that has the
// handler deleted once nothing calls it any more, also when it lets go of itself.
template <class Owner, class Handle, class Handler>
Result<Owner> Owning(int result, Handle* made, std::unique_ptr<Handler> handler,
                     int (*setDestroyCallback)(Handle*, void (*)(void*))) {
  Owner owner(made);
  if (result >= 0) {
    result = setDestroyCallback(made, [](void* owned) { delete static_cast<Handler*>(owned); });
  }
  if (result < 0) return Error::OfResult(result);
  static_cast<void>(handler.release());
  return owner;
}

}  // namespace Bus
