#pragma once

#include <string>
#include <utility>
#include <variant>

namespace Bus {

// Why something on the bus did not come about.
struct Error {
  // Of the system, above 0.
  int code = 0;
  // The bus's, "org.freedesktop.DBus.Error.NoReply"; empty for what failed on this side.
  std::string name = {};
  // For people.
  std::string text = {};

  // `result`: the negative error code of a call of the bus's library.
  [[nodiscard]] static Error OfResult(int result);
  // Answers to a call: its work failed, the method does nothing, its arguments make no sense, or it is one
  // too many.
  [[nodiscard]] static Error Failed(std::string text);
  [[nodiscard]] static Error NotSupported(std::string text);
  [[nodiscard]] static Error InvalidArguments(std::string text);
  [[nodiscard]] static Error LimitsExceeded(std::string text);

  // Whether nobody owns the name that was called, and nobody could be started for it.
  [[nodiscard]] bool IsForWantOfOwner() const;
  // Whether whoever was called does not know the method.
  [[nodiscard]] bool IsOfUnknownMethod() const;
  // Whether what was asked for would have been one too many.
  [[nodiscard]] bool IsOfLimits() const;
};

struct Nothing {};

// A value, or why there is none.
template <class Value = Nothing>
class [[nodiscard]] Result {
 public:
  Result(Value value) : content_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : content_(std::in_place_index<1>, std::move(error)) {}

  explicit operator bool() const { return content_.index() == 0; }
  // Only of a result that has one.
  Value& operator*() { return std::get<0>(content_); }
  const Value& operator*() const { return std::get<0>(content_); }
  Value* operator->() { return &std::get<0>(content_); }
  const Value* operator->() const { return &std::get<0>(content_); }
  [[nodiscard]] const Error& Failure() const { return std::get<1>(content_); }

 private:
  std::variant<Value, Error> content_;
};

// Of a call of the bus's library, which answers a negative error code on failure.
[[nodiscard]] inline Result<> ResultOf(int result) {
  if (result < 0) return Error::OfResult(result);
  return Nothing{};
}

// Puts what was made in its place.
template <class Value>
Result<> Keep(Value& place, Result<Value> made) {
  if (!made) return made.Failure();
  place = std::move(*made);
  return Nothing{};
}

}  // namespace Bus
