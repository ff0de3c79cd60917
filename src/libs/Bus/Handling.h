#pragma once

#include "libs/Bus/Deferred.h"

#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Bus {

// The unique name of the connection that a call comes from.
struct Caller {
  std::string name;
};

// Sends the reply to a call, with these results.
template <class... Types>
Result<> Reply(sd_bus_message* call, const Types&... results) {
  sd_bus_message* made = nullptr;
  int result = sd_bus_message_new_method_return(call, &made);
  const BusMessagePtr reply(made);
  if (result >= 0) result = AppendAll(made, results...);
  return ResultOf(result < 0 ? result : sd_bus_send(nullptr, made, nullptr));
}

// A call whose handler has returned this: one value, several, none, or an error in place of them.
template <class Returned>
struct Answer {
  static std::string Types() { return SignatureOf<Returned>(); }
  template <class Work>
  static Result<> With(sd_bus_message* call, const Work& work) {
    return Reply(call, work());
  }
};
template <>
struct Answer<void> {
  static std::string Types() { return {}; }
  template <class Work>
  static Result<> With(sd_bus_message* call, const Work& work) {
    work();
    return Reply(call);
  }
};
template <>
struct Answer<Result<>> {
  static std::string Types() { return {}; }
  template <class Work>
  static Result<> With(sd_bus_message* call, const Work& work) {
    const Result<> result = work();
    return result ? Reply(call) : result;
  }
};
template <class Value>
struct Answer<Result<Value>> {
  static std::string Types() { return SignatureOf<Value>(); }
  template <class Work>
  static Result<> With(sd_bus_message* call, const Work& work) {
    const Result<Value> result = work();
    return result ? Reply(call, *result) : result.Failure();
  }
};
template <class... Values>
struct Answer<std::tuple<Values...>> {
  static std::string Types() { return SignatureOf<Values...>(); }
  template <class Work>
  static Result<> With(sd_bus_message* call, const Work& work) {
    return std::apply([call](const Values&... values) { return Reply(call, values...); }, work());
  }
};

// A handler that returns `Returned` and takes these.
template <class Returned, class... Taken>
struct Handling {
  static std::string ArgumentTypes() { return SignatureOf<Taken...>(); }
  static std::string ResultTypes() { return Answer<Returned>::Types(); }
  template <class Handler>
  static Result<> Handle(sd_bus_message* call, const Handler& handler) {
    std::tuple<Taken...> arguments;
    if (const int result = ReadAll(call, arguments); result < 0) return Error::OfResult(result);
    return Answer<Returned>::With(
        call, [&]() -> decltype(auto) { return std::apply(handler, std::move(arguments)); });
  }
};
// One that takes who calls, too.
template <class Returned, class... Taken>
struct Handling<Returned, Caller, Taken...> {
  static std::string ArgumentTypes() { return SignatureOf<Taken...>(); }
  static std::string ResultTypes() { return Answer<Returned>::Types(); }
  template <class Handler>
  static Result<> Handle(sd_bus_message* call, const Handler& handler) {
    Caller caller{Message(call).Sender()};
    return Handling<Returned, Taken...>::Handle(
        call, [&](Taken... arguments) { return handler(caller, std::move(arguments)...); });
  }
};
// One that answers the call itself.
template <class... Results, class... Taken>
struct Handling<void, Deferred<Results...>, Taken...> {
  static std::string ArgumentTypes() { return SignatureOf<Taken...>(); }
  static std::string ResultTypes() { return SignatureOf<Results...>(); }
  template <class Handler>
  static Result<> Handle(sd_bus_message* call, const Handler& handler) {
    std::tuple<Taken...> arguments;
    if (const int result = ReadAll(call, arguments); result < 0) return Error::OfResult(result);
    std::apply(handler, std::tuple_cat(std::tuple(Deferred<Results...>(call)), std::move(arguments)));
    return Nothing{};
  }
};

// The handling of a function object's type, whose call operator is const and no template.
template <class Handler>
struct HandlerTypes : HandlerTypes<decltype(&Handler::operator())> {};
template <class Handler, class Returned, class... Taken>
struct HandlerTypes<Returned (Handler::*)(Taken...) const>
    : Handling<std::decay_t<Returned>, std::decay_t<Taken>...> {};

}  // namespace Bus
