#pragma once

#include "print/Printing.h"

#include <optional>
#include <string>

// What each of srctl's commands does. Data goes to standard output, problems to standard error.
namespace Srctl::Commands {

// srctl's exit statuses. Those from 4 on are of opening a file, in the order of their gravity.
enum class Status {
  Done = 0,
  Refused = 1,
  Usage = 2,
  Unreachable = 3,
  Declined = 4,
  NotVerified = 5,
  NotAServiceRecord = 6,
  CouldNotAsk = 7,
  NotSaved = 8,
  Ended = 9,
};

// One of the two is set.
struct StoreChoice {
  std::optional<std::string> id;
  std::optional<std::string> url;
};

[[nodiscard]] Status List(Printing::Format format);
[[nodiscard]] Status Show(const std::string& id, Printing::Format format);
[[nodiscard]] Status Delete(const std::string& id);
[[nodiscard]] Status DefaultGateway(const StoreChoice& store, const std::string& gateway);
// The file "-" is standard input.
[[nodiscard]] Status Discover(const std::string& file);
[[nodiscard]] Status ShowLogging(Printing::Format format);
[[nodiscard]] Status SetLogging(bool on, Printing::Format format);

}  // namespace Srctl::Commands
