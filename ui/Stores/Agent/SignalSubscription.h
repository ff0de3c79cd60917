#pragma once

#include "Agent/GLibHandles.h"

#include <functional>
#include <memory>

namespace Stores {

// What to listen to; null for anything.
struct SignalRule {
  const char* sender = nullptr;
  const char* interface = nullptr;
  const char* member = nullptr;
  const char* path = nullptr;
};

// Calls a function with the parameters of each signal of a kind, from the main loop, until it goes.
class SignalSubscription {
 public:
  using Handler = std::function<void(GVariant* parameters)>;

  // Signals with other parameters are left out.
  SignalSubscription(GDBusConnection* bus, const SignalRule& rule, const char* type, Handler handler);

 private:
  struct State;
  struct End {
    void operator()(State* state) const;
  };
  std::unique_ptr<State, End> state_;
};

}  // namespace Stores
