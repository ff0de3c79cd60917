#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Config {

// Where a key of the configuration leads: names between single backslashes, all but the last of them names of
// containers. UTF-8.
class KeyPath {
 public:
  // Nothing when a property list's file cannot hold what lies there: a name that would come back from it as
  // another one, or too many of them.
  [[nodiscard]] static std::optional<KeyPath> Of(const std::wstring& rawKey);
  // Of how many names the key consists, the entry's counted.
  [[nodiscard]] static std::size_t ComponentsOf(const std::wstring& rawKey);

  // All but the last name: the same for all entries of one container.
  [[nodiscard]] std::string_view Way() const;
  // The last name, under which the entry itself lies.
  [[nodiscard]] std::string_view EntryName() const;
  // Where the entry lies; null when one of the containers is missing, or is a value.
  [[nodiscard]] const PropertyList::Dictionary* ContainerIn(const PropertyList::Dictionary& root) const;
  // The same, but such a container is made, in the place of the value.
  [[nodiscard]] PropertyList::Dictionary& MakeContainerIn(PropertyList::Dictionary& root) const;

 private:
  explicit KeyPath(std::string names) : names_(std::move(names)) {}

  std::string names_;
};

}  // namespace Config
