#pragma once

#include "libs/NetworkLocation/NetworkLocation.h"
#include "libs/Wording/Message.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Stores {

// What the agent tells of a store. All text is UTF-8 and may hold any character.
struct Gateway {
  std::string name;
  std::string url;
  bool isDefault = false;

  bool operator==(const Gateway&) const = default;
};

struct Store {
  std::string id;
  std::string name;
  std::string url;
  std::vector<Gateway> gateways;

  bool operator==(const Store&) const = default;
};

// Where this machine stands relative to a store.
struct Location {
  std::uint64_t number = Wayfinding::kDeciding;
  Wording::Message reason;  // empty while it is being decided

  bool operator==(const Location&) const = default;
};

// What became of a store of a file that was opened, or of the file.
struct StoreOutcome {
  std::string id;
  std::string name;
  std::string outcome;  // "added" and so on
  std::string reason;   // a sentence; may be empty
};

struct Finished {
  std::uint64_t opening = 0;
  std::string outcome;
  std::vector<StoreOutcome> stores;
  std::string reason = {};  // where there are no stores: a sentence; may be empty
};

// Whether the agent's list and its file agree.
enum class SavedState { Good, Unsaved, Unreadable };

}  // namespace Stores
