#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Dialogs {

// A caption of ours and what somebody else wrote, made fit.
struct Fact {
  std::string caption;
  std::string value;
  bool operator==(const Fact&) const = default;
};

// What a window tells of a store, out of a dictionary with the keys of addStore. What is not in it is left
// out.
struct StoreFacts {
  // More would be no help to anybody.
  static constexpr std::size_t kMostGateways = 100;

  [[nodiscard]] static StoreFacts Of(const PropertyList::Dictionary& details);

  std::string name;
  std::string host;
  std::string hostASCII;  // only where it is another one
  std::string address;    // all of it, with what the host does not tell
  std::vector<Fact> verified;
  std::vector<Fact> gateways;  // the default one first
};

// The gateway's name and, on a line of its own, its address or that it has none.
[[nodiscard]] std::string ShownGateway(const std::string& name, const std::string& url);

// That there are so many more than what is shown.
[[nodiscard]] std::string MoreText(std::size_t count);

}  // namespace Dialogs
