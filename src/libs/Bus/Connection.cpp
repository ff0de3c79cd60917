#include "libs/Bus/Connection.h"

#include "libs/Bus/Callback.h"
#include "libs/Bus/EventLoop.h"
#include "libs/Bus/Handler.h"
#include "libs/Bus/ServedInterface.h"
#include "libs/Lifetime/UniqueHandle.h"

#include <cerrno>
#include <cstdint>
#include <memory>
#include <utility>

namespace Bus {
namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

constexpr Service kBus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};

std::uint64_t LimitOf(microseconds time) {
  return time == kForEver ? UINT64_MAX : static_cast<std::uint64_t>(time.count());
}

microseconds TimeUntil(steady_clock::time_point deadline) {
  if (deadline == steady_clock::time_point::max()) return kForEver;
  return std::chrono::ceil<microseconds>(deadline - steady_clock::now());
}

template <class Handler, class Argument>
void Call(void* handler, const Argument& argument) noexcept {
  static_cast<void>(Caught([&]() -> Result<> {
    (*static_cast<Handler*>(handler))(argument);
    return Nothing{};
  }));
}

// 0 leaves the message to others, too.
int HandleMatch(sd_bus_message* message, void* handler, sd_bus_error* /*error*/) {
  Call<Connection::MessageHandler>(handler, Message(message));
  return 0;
}

std::string TextOf(const char* text) {
  return text == nullptr ? "" : text;
}

Error ErrorOf(const sd_bus_error& error, int code) {
  Error failure = Error::OfResult(code);
  failure.name = TextOf(error.name);
  if (error.message != nullptr) failure.text = error.message;
  return failure;
}

Result<Message> ReplyOf(sd_bus_message* message) {
  const sd_bus_error* const error = sd_bus_message_get_error(message);
  if (error != nullptr) return ErrorOf(*error, -sd_bus_message_get_errno(message));
  return Message(message);
}

// Without a callback of its own, a match that the bus refuses would end the connection.
int PassOverRefusal(sd_bus_message* /*reply*/, void* /*handler*/, sd_bus_error* /*error*/) {
  return 0;
}

// The library calls again and again for a peer that has left, unless more than 0 is returned.
int HandleLeft(sd_bus_track* /*track*/, void* handler) {
  static_cast<void>(Caught([&]() -> Result<> {
    (*static_cast<std::function<void()>*>(handler))();
    return Nothing{};
  }));
  return 1;
}

int HandleReply(sd_bus_message* message, void* handler, sd_bus_error* /*error*/) {
  Call<Connection::ReplyHandler>(handler, ReplyOf(message));
  return 0;
}

template <class Handler>
Result<Slot> Owned(int result, sd_bus_slot* slot, std::unique_ptr<Handler> handler) {
  return Owning<Slot>(result, slot, std::move(handler), sd_bus_slot_set_destroy_callback);
}

}  // namespace

std::string MatchOwnerOf(const std::string& name) {
  return "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
         "member='NameOwnerChanged',arg0='" +
         name + "'";
}

std::string MatchLoss() {
  return "type='signal',sender='org.freedesktop.DBus.Local',path='/org/freedesktop/DBus/Local',"
         "interface='org.freedesktop.DBus.Local',member='Disconnected'";
}

void LeaveToConnection(Slot call) {
  sd_bus_slot_set_floating(call.get(), 1);
}

void Connection::Closing::operator()(sd_bus* bus) const {
  if (dropsUnsent) sd_bus_close(bus);
  sd_bus_flush_close_unref(bus);
}

Result<Connection> Connection::ToUserBus(Unsent unsent) {
  sd_bus* bus = nullptr;
  if (const int result = sd_bus_open_user(&bus); result < 0) return Error::OfResult(result);
  return Connection(Handle(bus, {.dropsUnsent = unsent == Unsent::Dropped}));
}

Result<Connection> Connection::ToSystemBus() {
  sd_bus* bus = nullptr;
  if (const int result = sd_bus_open_system(&bus); result < 0) return Error::OfResult(result);
  return Connection(Handle(bus, {.dropsUnsent = true}));
}

Result<Connection> Connection::To(const std::string& address) {
  sd_bus* bus = nullptr;
  int result = sd_bus_new(&bus);
  Handle owned(bus);
  if (result >= 0) result = sd_bus_set_address(bus, address.c_str());
  if (result >= 0) result = sd_bus_set_bus_client(bus, 1);
  if (result >= 0) result = sd_bus_start(bus);
  if (result < 0) return Error::OfResult(result);
  return Connection(std::move(owned));
}

Result<> Connection::AwaitReady(steady_clock::time_point deadline) {
  int ready = sd_bus_is_ready(bus_.get());
  const Result<bool> result = ProcessUntil(
      [&] {
        ready = sd_bus_is_ready(bus_.get());
        return ready != 0;
      },
      deadline);
  if (!result) return result.Failure();
  return ResultOf(*result ? ready : -ETIMEDOUT);
}

Result<> Connection::RequestName(const std::string& name) {
  return ResultOf(sd_bus_request_name(bus_.get(), name.c_str(), 0));
}

bool Connection::HasOwner(const std::string& name) {
  const Result<bool> isOwned = Call<bool>(kBus, {}, "NameHasOwner", name);
  return isOwned && *isOwned;
}

Result<Slot> Connection::Serve(const std::string& path, Interface interface) {
  auto served = std::make_unique<ServedInterface>(std::move(interface));
  sd_bus_slot* slot = nullptr;
  const int result = sd_bus_add_object_vtable(bus_.get(), &slot, path.c_str(), served->Name().c_str(),
                                              served->Table(), served.get());
  return Owned(result, slot, std::move(served));
}

Result<Slot> Connection::Match(const std::string& rule, MessageHandler handler) {
  auto owned = std::make_unique<MessageHandler>(std::move(handler));
  sd_bus_slot* slot = nullptr;
  const int result = sd_bus_add_match(bus_.get(), &slot, rule.c_str(), HandleMatch, owned.get());
  return Owned(result, slot, std::move(owned));
}

Result<Slot> Connection::MatchLater(const std::string& rule, MessageHandler handler) {
  auto owned = std::make_unique<MessageHandler>(std::move(handler));
  sd_bus_slot* slot = nullptr;
  const int result =
      sd_bus_add_match_async(bus_.get(), &slot, rule.c_str(), HandleMatch, PassOverRefusal, owned.get());
  return Owned(result, slot, std::move(owned));
}

Result<PeerWatch> Connection::WatchPeer(const std::string& uniqueName, std::function<void()> left) {
  auto handler = std::make_unique<std::function<void()>>(std::move(left));
  sd_bus_track* track = nullptr;
  const int result = sd_bus_track_new(bus_.get(), &track, HandleLeft, handler.get());
  Result<PeerWatch> watch =
      Owning<PeerWatch>(result, track, std::move(handler), sd_bus_track_set_destroy_callback);
  if (!watch) return watch;
  if (const int added = sd_bus_track_add_name(track, uniqueName.c_str()); added < 0)
    return Error::OfResult(added);
  return watch;
}

Error Connection::Unmade(const char* method, const Error& failure) {
  return {failure.code, "", std::string("the call of ") + method + " could not be made: " + failure.text};
}

Result<Message> Connection::NewEmptyCall(const Service& service, const CallOptions& options,
                                         const char* method) {
  sd_bus_message* call = nullptr;
  int result = sd_bus_message_new_method_call(bus_.get(), &call, service.name, service.path,
                                              service.interface, method);
  BusMessagePtr owned(call);
  if (result >= 0 && !options.startsService) result = sd_bus_message_set_auto_start(call, 0);
  if (result < 0) return Error::OfResult(result);
  return Message(std::move(owned));
}

Result<Message> Connection::NewSignal(const char* receiver, const char* path, const char* interface,
                                      const char* member) {
  sd_bus_message* signal = nullptr;
  int result = sd_bus_message_new_signal(bus_.get(), &signal, path, interface, member);
  BusMessagePtr owned(signal);
  if (result >= 0 && receiver != nullptr) result = sd_bus_message_set_destination(signal, receiver);
  if (result < 0) return Error::OfResult(result);
  return Message(std::move(owned));
}

Result<Message> Connection::SendAndWait(const Message& call, const CallOptions& options) {
  sd_bus_error failure{};
  const Lifetime::UniqueHandle<sd_bus_error, sd_bus_error_free> owned(&failure);
  sd_bus_message* reply = nullptr;
  const int result = sd_bus_call(bus_.get(), call.Get(), LimitOf(options.timeOut), &failure, &reply);
  if (result < 0) return ErrorOf(failure, result);
  return Message(BusMessagePtr(reply));
}

Result<Slot> Connection::Send(const Message& call, const CallOptions& options, ReplyHandler handler) {
  auto owned = std::make_unique<ReplyHandler>(std::move(handler));
  sd_bus_slot* slot = nullptr;
  const int result =
      sd_bus_call_async(bus_.get(), &slot, call.Get(), HandleReply, owned.get(), LimitOf(options.timeOut));
  return Owned(result, slot, std::move(owned));
}

Result<> Connection::Send(const Message& message) {
  return ResultOf(sd_bus_send(bus_.get(), message.Get(), nullptr));
}

Result<bool> Connection::Process() {
  const int result = sd_bus_process(bus_.get(), nullptr);
  if (result < 0) return Error::OfResult(result);
  return result > 0;
}

Result<> Connection::Wait(microseconds limit) {
  return ResultOf(sd_bus_wait(bus_.get(), LimitOf(limit)));
}

Result<bool> Connection::ProcessUntil(const std::function<bool()>& done, steady_clock::time_point deadline) {
  while (!done()) {
    const Result<bool> progress = Process();
    if (!progress) return progress.Failure();
    if (*progress) continue;
    const microseconds left = TimeUntil(deadline);
    if (left.count() <= 0) return false;
    if (const Result<> waited = Wait(left); !waited) return waited.Failure();
  }
  return true;
}

void Connection::ProcessArrived() {
  // The answer comes behind them and leaves them in the queue; while there is one, nothing else is read.
  static_cast<void>(HasOwner(kBus.name));
  std::uint64_t queued = 0;
  while (sd_bus_get_n_queued_read(bus_.get(), &queued) >= 0 && queued > 0 &&
         sd_bus_process(bus_.get(), nullptr) > 0) {
  }
}

Result<> Connection::Flush() {
  return ResultOf(sd_bus_flush(bus_.get()));
}

Result<> Connection::Attach(EventLoop& loop) {
  return ResultOf(sd_bus_attach_event(bus_.get(), loop.Get(), SD_EVENT_PRIORITY_NORMAL));
}

void Connection::Detach() {
  sd_bus_detach_event(bus_.get());
}

Result<> Connection::EndLoopWhenLost() {
  return ResultOf(sd_bus_set_exit_on_disconnect(bus_.get(), 1));
}

}  // namespace Bus
