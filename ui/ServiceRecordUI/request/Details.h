#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Dialogs {

// What a dialog's dictionary holds, as its writer left it: a value that is missing or of another kind is
// empty.
namespace Details {

[[nodiscard]] std::string Text(const PropertyList::Dictionary& details, std::string_view key);
[[nodiscard]] bool Mark(const PropertyList::Dictionary& details, std::string_view key);
[[nodiscard]] std::vector<std::string> Texts(const PropertyList::Dictionary& details, std::string_view key);

struct Gateway {
  std::string name;
  std::string url;
  bool isDefault = false;
  // What an older agent does not tell.
  std::optional<std::uint64_t> authentication = {};
  std::optional<std::uint64_t> edition = {};
  std::optional<std::uint64_t> rewriteMode = {};
};
// Of StoreGateways, in its order, behind the default one where that has no address and is left out there.
[[nodiscard]] std::vector<Gateway> Gateways(const PropertyList::Dictionary& details);

}  // namespace Details

}  // namespace Dialogs
