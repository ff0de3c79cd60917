#include "doctor/LocationAnswers.h"

#include "bus/AgentClient.h"
#include "doctor/HelpingThreads.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace Srctl {
namespace {

using std::chrono::steady_clock;
using namespace std::chrono_literals;

// The library gives up on a beacon after ten seconds.
constexpr auto kDecisionTime = 12s;

// Nothing when the agent does not answer.
std::optional<LocationInfo> Decided(AgentClient& agent, const std::string& url,
                                    steady_clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::seconds>(deadline - steady_clock::now());
  if (!agent.DecidedLocationForStore(url, std::max(left, 0s))) return std::nullopt;
  return agent.ExplainedLocationForStore(url);
}

}  // namespace

LocationAnswers::LocationAnswers(AgentClient& agent, const std::vector<StoreInfo>& stores)
    : agent_(agent), stores_(stores), told_(stores.size()) {
  for (auto& told : told_) answers_.push_back(told.get_future().share());
  thread_ = StartHelpers(1, [this] { Ask(); });
  if (thread_.empty()) Ask();
}

void LocationAnswers::Ask() {
  const auto deadline = steady_clock::now() + kDecisionTime;
  bool answers = true;
  for (std::size_t store = 0; store < stores_.size(); ++store) {
    const std::optional<LocationInfo> location =
        answers ? Decided(agent_, stores_[store].url, deadline) : std::nullopt;
    answers = location.has_value();
    told_[store].set_value(location);
  }
}

}  // namespace Srctl
