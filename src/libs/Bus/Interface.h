#pragma once

#include "libs/Bus/Deferred.h"
#include "libs/Bus/Handling.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace Bus {

// An interface as an object offers it: methods, properties and signals with the names of their values, which
// others see on introspection. The signatures are those of the functions. Handlers are called on the thread
// that serves the connection; what they throw is an error to the caller.
class Interface {
 public:
  using Names = std::initializer_list<std::string>;

  explicit Interface(std::string name) : name_(std::move(name)) {}

  // `handler` takes the arguments and returns nothing, a value, a std::tuple of several, or a Result of
  // nothing or of a value for what may be an error. One that takes a Deferred before the arguments returns
  // nothing and answers with it; one that takes a Caller there is told who calls.
  template <class Handler>
  void Method(const std::string& name, Names arguments, Names results, Handler handler) {
    using Types = HandlerTypes<Handler>;
    methods_.push_back({name, Types::ArgumentTypes(), Types::ResultTypes(), Joined(arguments, results),
                        [handler](sd_bus_message* call) { return Types::Handle(call, handler); }});
  }

  // Read only and without a signal. `get` takes nothing and returns the value.
  template <class Get>
  void Property(const std::string& name, Get get) {
    using Types = HandlerTypes<Get>;
    properties_.push_back({name, Types::ResultTypes(),
                           [get](sd_bus_message* reply) { return ResultOf(AppendAll(reply, get())); }});
  }

  template <class... Types>
  void Signal(const std::string& name, Names values) {
    signals_.push_back({name, SignatureOf<Types...>(), Joined(values, {})});
  }

 private:
  friend class ServedInterface;

  struct MethodEntry {
    std::string name;
    std::string arguments;
    std::string results;
    std::string names;
    std::function<Result<>(sd_bus_message* call)> handle;
  };
  struct PropertyEntry {
    std::string name;
    std::string type;
    std::function<Result<>(sd_bus_message* reply)> append;
  };
  struct SignalEntry {
    std::string name;
    std::string types;
    std::string names;
  };

  // As the bus's library takes them: each with a NUL behind it.
  [[nodiscard]] static std::string Joined(Names first, Names second);

  std::string name_;
  std::vector<MethodEntry> methods_;
  std::vector<PropertyEntry> properties_;
  std::vector<SignalEntry> signals_;
};

}  // namespace Bus
