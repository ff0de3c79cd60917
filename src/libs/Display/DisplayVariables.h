#pragma once

#include <map>
#include <string>
#include <vector>

// By which variables of its environment a program finds the desktop that it shows its windows on. Any thread,
// as long as nobody changes the environment.
namespace Display {

// Each as NAME=value.
using Variables = std::vector<std::string>;

// Those that name a display, how to talk to it, the desktop on it and its user's language, without a '/', in
// UTF-8, and no others: none has a program load anything from elsewhere. Empty when they name no display.
[[nodiscard]] Variables Among(const Variables& environment);
[[nodiscard]] Variables OfThisProcess();

// Where a window may be shown, one behind the other: on what is named, which may have ended, and then on this
// process's own desktop, for which the empty one stands. None where there is neither.
[[nodiscard]] std::vector<Variables> ToShowOn(const Variables& named);

// The environment of this process on another desktop: with those variables in place of its own of that kind.
[[nodiscard]] Variables EnvironmentOn(const Variables& desktop);

[[nodiscard]] std::map<std::string, std::string> ByName(const Variables& variables);

// For C: a null pointer behind the last. Good as long as the variables are.
[[nodiscard]] std::vector<const char*> PointersTo(const Variables& variables);
// The other way; null means none.
[[nodiscard]] Variables CopyOf(const char* const* variables);

}  // namespace Display
