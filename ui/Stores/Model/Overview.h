#pragma once

#include <string>

namespace Stores {

// What there is to show as a whole.
struct Overview {
  enum class Page { Loading, Empty, Stores, Unreachable, Unreadable };
  enum class Warning { None, Unsaved, AgentEnded };

  Page page = Page::Loading;
  Warning warning = Warning::None;
  std::string problem = {};  // why the agent is unreachable; may hold any character

  bool operator==(const Overview&) const = default;
};

// Something that has just happened, in sentences fit for a window.
struct Notice {
  std::string sentences;
  bool isGood = false;
  std::string storeID = {};  // the store that was added; empty for none
  bool isFurther = false;  // files of before are still being opened: what was told of them goes on being true
};

}  // namespace Stores
