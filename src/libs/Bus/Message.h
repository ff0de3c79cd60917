#pragma once

#include "libs/Bus/Codec.h"
#include "libs/Bus/Result.h"
#include "libs/Bus/SdBus.h"

#include <string>
#include <tuple>
#include <vector>

namespace Bus {

// What reading gives: nothing, a value, or several.
template <class... Values>
struct ReadingOf {
  using Type = std::tuple<Values...>;
};
template <class Value>
struct ReadingOf<Value> {
  using Type = Value;
};
template <>
struct ReadingOf<> {
  using Type = Nothing;
};
template <class... Values>
using Reading = typename ReadingOf<Values...>::Type;

// A message that has arrived. A handle: copies are the same message. Of the connection's thread.
class Message {
 public:
  // Shares the message with its other holders.
  explicit Message(sd_bus_message* message) : message_(sd_bus_message_ref(message)) {}
  explicit Message(BusMessagePtr message) : message_(std::move(message)) {}
  Message(const Message& other) : Message(other.message_.get()) {}
  Message(Message&&) noexcept = default;
  Message& operator=(Message other) noexcept {
    message_.swap(other.message_);
    return *this;
  }
  ~Message() = default;

  // The unique name of the connection that it comes from; empty when the bus does not tell.
  [[nodiscard]] std::string Sender() const;
  [[nodiscard]] bool IsSignal(const char* interface, const char* member) const;

  // Its first values, which must be of these types.
  template <class... Values>
  [[nodiscard]] Result<Reading<Values...>> Read() const {
    std::tuple<Values...> values;
    int result = sd_bus_message_rewind(message_.get(), 1);
    if (result >= 0) result = ReadAll(message_.get(), values);
    if (result < 0) return Error::OfResult(result);
    if constexpr (sizeof...(Values) == 0) {
      return Nothing{};
    } else if constexpr (sizeof...(Values) == 1) {
      return std::get<0>(std::move(values));
    } else {
      return values;
    }
  }

  // All its values, whatever their types, without those of a kind that no property list has.
  [[nodiscard]] Result<PropertyList::Array> Values() const;

  [[nodiscard]] sd_bus_message* Get() const { return message_.get(); }

 private:
  BusMessagePtr message_;
};

}  // namespace Bus
