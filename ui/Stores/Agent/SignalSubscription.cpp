#include "Agent/SignalSubscription.h"

#include <utility>

namespace Stores {

using namespace Windows;

struct SignalSubscription::State {
  ObjectPtr<GDBusConnection> bus;
  const char* type;
  Handler handler;
  guint id = 0;

  static void Take(GDBusConnection* /*bus*/, const char* /*sender*/, const char* /*path*/,
                   const char* /*interface*/, const char* /*signal*/, GVariant* parameters, gpointer state) {
    const auto* const self = static_cast<State*>(state);
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE(self->type))) self->handler(parameters);
  }
};

// GLib may still have a signal for it on the way, and frees the state when it has none any more.
void SignalSubscription::End::operator()(State* state) const {
  const ObjectPtr<GDBusConnection> bus = Shared(state->bus.get());
  state->handler = [](GVariant* /*parameters*/) {};
  g_dbus_connection_signal_unsubscribe(bus.get(), state->id);
}

SignalSubscription::SignalSubscription(GDBusConnection* bus, const SignalRule& rule, const char* type,
                                       Handler handler)
    : state_(new State{Shared(bus), type, std::move(handler)}) {
  state_->id = g_dbus_connection_signal_subscribe(
      bus, rule.sender, rule.interface, rule.member, rule.path, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
      &State::Take, state_.get(), [](gpointer state) { delete static_cast<State*>(state); });
}

}  // namespace Stores
