#pragma once

#include "Shared/Gio.h"

#include <functional>
#include <memory>
#include <type_traits>

namespace Stores {

// As Signals::Connect, for a signal whose parameters are wanted: it has those of the types `Arguments`.
template <class... Arguments>
void ConnectWith(gpointer object, const char* signal,
                 const std::type_identity_t<std::function<void(Arguments...)>>& function) {
  using Function = std::function<void(Arguments...)>;
  const auto call = [](gpointer /*object*/, Arguments... arguments, gpointer data) {
    (*static_cast<Function*>(data))(arguments...);
  };
  const auto end = [](gpointer data, GClosure* /*closure*/) { delete static_cast<Function*>(data); };
  g_signal_connect_data(object, signal, G_CALLBACK(+call), std::make_unique<Function>(function).release(),
                        +end, static_cast<GConnectFlags>(0));
}

}  // namespace Stores
