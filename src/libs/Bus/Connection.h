#pragma once

#include "libs/Bus/Interface.h"
#include "libs/Bus/Message.h"
#include "libs/Bus/Result.h"
#include "libs/Bus/SdBus.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace Bus {

class EventLoop;

// An interface of another program's object.
struct Service {
  const char* name;
  const char* path;
  const char* interface;
};

inline constexpr std::chrono::microseconds kForEver = std::chrono::microseconds::max();

struct CallOptions {
  std::chrono::microseconds timeOut = std::chrono::seconds(25);
  bool startsService = true;  // when nobody owns the name
};

// Something that the connection does while this lives: serves an interface, calls a handler. Handlers may let
// it go.
using Slot = BusSlotPtr;

// Another program's connection to the bus that is watched while this lives.
using PeerWatch = BusTrackPtr;

// Leaves a call's handler to the connection, which lets it go behind the reply.
void LeaveToConnection(Slot call);

// What a match takes for the bus name getting an owner or losing its owner: NameOwnerChanged(name, before,
// after).
[[nodiscard]] std::string MatchOwnerOf(const std::string& name);
// For the end of the connection itself.
[[nodiscard]] std::string MatchLoss();

// A connection to a bus. It and everything made from it is used by one thread. Handlers are called while
// messages are processed, or by the event loop that it is attached to; what they throw is dropped.
class Connection {
 public:
  using MessageHandler = std::function<void(const Message& message)>;
  using ReplyHandler = std::function<void(const Result<Message>& reply)>;

  // What becomes, when it ends, of what was not sent: Dropped waits for nobody.
  enum class Unsent { WaitedFor, Dropped };

  [[nodiscard]] static Result<Connection> ToUserBus(Unsent unsent = Unsent::WaitedFor);
  // Drops what was not sent.
  [[nodiscard]] static Result<Connection> ToSystemBus();
  [[nodiscard]] static Result<Connection> To(const std::string& address);

  // Waits until the bus has taken the connection, which every call waits for without a time.
  [[nodiscard]] Result<> AwaitReady(std::chrono::steady_clock::time_point deadline);

  // Without queueing and replacement.
  [[nodiscard]] Result<> RequestName(const std::string& name);
  // False when the bus does not answer.
  [[nodiscard]] bool HasOwner(const std::string& name);

  // The interface is served at the path while the slot lives.
  [[nodiscard]] Result<Slot> Serve(const std::string& path, Interface interface);

  // Calls a method and waits for the reply. Gives its first values, which must be of these types.
  template <class... Results, class... Arguments>
  [[nodiscard]] Result<Reading<Results...>> Call(const Service& service, const CallOptions& options,
                                                 const char* method, const Arguments&... arguments) {
    Result<Message> reply = CallForReply(service, options, method, arguments...);
    if (!reply) return reply.Failure();
    return reply->Read<Results...>();
  }
  template <class... Arguments>
  [[nodiscard]] Result<Message> CallForReply(const Service& service, const CallOptions& options,
                                             const char* method, const Arguments&... arguments) {
    const Result<Message> call = NewCall(service, options, method, arguments...);
    return call ? SendAndWait(*call, options) : call;
  }
  // The same, but the handler gets the reply, while the slot lives.
  template <class... Arguments>
  [[nodiscard]] Result<Slot> CallAsync(const Service& service, const CallOptions& options, const char* method,
                                       ReplyHandler handler, const Arguments&... arguments) {
    const Result<Message> call = NewCall(service, options, method, arguments...);
    if (!call) return call.Failure();
    return Send(*call, options, std::move(handler));
  }

  template <class Type>
  [[nodiscard]] Result<Type> Property(const Service& service, const CallOptions& options, const char* name) {
    const Service properties{service.name, service.path, "org.freedesktop.DBus.Properties"};
    Result<Variant<Type>> value =
        Call<Variant<Type>>(properties, options, "Get", std::string(service.interface), std::string(name));
    if (!value) return value.Failure();
    return std::move(value->value);
  }

  // Signals to everybody. Nothing is waited for.
  template <class... Values>
  [[nodiscard]] Result<> Emit(const char* path, const char* interface, const char* member,
                              const Values&... values) {
    return EmitTo(nullptr, path, interface, member, values...);
  }
  // The same to the owner of one name alone; null for everybody.
  template <class... Values>
  [[nodiscard]] Result<> EmitTo(const char* receiver, const char* path, const char* interface,
                                const char* member, const Values&... values) {
    const Result<Message> signal = NewSignal(receiver, path, interface, member);
    if (!signal) return signal.Failure();
    if (const int result = AppendAll(signal->Get(), values...); result < 0) return Error::OfResult(result);
    return Send(*signal);
  }

  // Signals that the rule, in the bus's language, lets through. Waits for the bus.
  [[nodiscard]] Result<Slot> Match(const std::string& rule, MessageHandler handler);
  // The same without waiting, and without being told where the bus refuses it.
  [[nodiscard]] Result<Slot> MatchLater(const std::string& rule, MessageHandler handler);

  // Calls the handler once the connection with that unique name has left the bus, which is a failure where it
  // has left already. Waits for the bus.
  [[nodiscard]] Result<PeerWatch> WatchPeer(const std::string& uniqueName, std::function<void()> left);

  // Handles one message, or sends what waits to be sent; false when there is nothing to do.
  [[nodiscard]] Result<bool> Process();
  // Waits for something to process.
  [[nodiscard]] Result<> Wait(std::chrono::microseconds limit);
  // Processes until `done` answers true; false when it does not until the deadline, which may be
  // time_point::max().
  [[nodiscard]] Result<bool> ProcessUntil(const std::function<bool()>& done,
                                          std::chrono::steady_clock::time_point deadline);
  // Handles what has arrived by now, however much goes on coming. Waits for the bus to answer.
  void ProcessArrived();
  // Waits until everything is sent.
  Result<> Flush();

  // Processes in the loop from now on.
  [[nodiscard]] Result<> Attach(EventLoop& loop);
  void Detach();
  // The loop that it is attached to ends with the connection, with a status that is none of success.
  [[nodiscard]] Result<> EndLoopWhenLost();

 private:
  struct Closing {
    bool dropsUnsent;
    void operator()(sd_bus* bus) const;
  };
  using Handle = std::unique_ptr<sd_bus, Closing>;

  explicit Connection(Handle bus) : bus_(std::move(bus)) {}

  template <class... Arguments>
  [[nodiscard]] Result<Message> NewCall(const Service& service, const CallOptions& options,
                                        const char* method, const Arguments&... arguments) {
    Result<Message> call = NewEmptyCall(service, options, method);
    const Result<> appended = call ? ResultOf(AppendAll(call->Get(), arguments...)) : call.Failure();
    if (!appended) return Unmade(method, appended.Failure());
    return call;
  }
  [[nodiscard]] static Error Unmade(const char* method, const Error& failure);
  [[nodiscard]] Result<Message> NewEmptyCall(const Service& service, const CallOptions& options,
                                             const char* method);
  [[nodiscard]] Result<Message> NewSignal(const char* receiver, const char* path, const char* interface,
                                          const char* member);
  [[nodiscard]] Result<Message> SendAndWait(const Message& call, const CallOptions& options);
  [[nodiscard]] Result<Slot> Send(const Message& call, const CallOptions& options, ReplyHandler handler);
  [[nodiscard]] Result<> Send(const Message& message);

  Handle bus_;
};

}  // namespace Bus
