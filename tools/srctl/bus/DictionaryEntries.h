#pragma once

#include "libs/PropertyList/PropertyList.h"

#include <cstdint>
#include <string>

namespace Srctl {

// Takes values out of a dictionary of the agent's. An entry that is missing leaves its variable as it is.
class DictionaryEntries {
 public:
  explicit DictionaryEntries(const PropertyList::Dictionary& dictionary) : dictionary_(dictionary) {}

  void Take(const char* key, std::string& text);
  void Take(const char* key, std::uint64_t& number);
  void Take(const char* key, bool& truth);
  // Null when there is none.
  [[nodiscard]] const PropertyList::Array* TakeArray(const char* key);

  // Whether every entry that was there was of the kind asked for.
  [[nodiscard]] bool AreAsExpected() const { return areAsExpected_; }

 private:
  template <class Kind>
  [[nodiscard]] const Kind* Find(const char* key);

  const PropertyList::Dictionary& dictionary_;
  bool areAsExpected_ = true;
};

}  // namespace Srctl
