#pragma once

#include "bus/StoreInfo.h"

#include <cstddef>
#include <future>
#include <optional>
#include <thread>
#include <vector>

namespace Srctl {

class AgentClient;

// Where the agent says that this machine stands relative to each of some stores. It is asked from the
// beginning on, by a thread of its own, to which the agent belongs until this object ends; the end waits for
// it. An agent that was started for the question may still be deciding: all together are waited for as long
// as the slowest store takes it.
class LocationAnswers {
 public:
  // The URLs of the stores; both outlive this object.
  LocationAnswers(AgentClient& agent, const std::vector<StoreInfo>& stores);
  LocationAnswers(const LocationAnswers&) = delete;
  LocationAnswers& operator=(const LocationAnswers&) = delete;

  // In the order of the stores. Nothing where the agent has not answered.
  using Answer = std::shared_future<std::optional<LocationInfo>>;
  [[nodiscard]] Answer Of(std::size_t store) const { return answers_[store]; }

 private:
  void Ask();

  AgentClient& agent_;
  const std::vector<StoreInfo>& stores_;
  std::vector<std::promise<std::optional<LocationInfo>>> told_;
  std::vector<Answer> answers_;
  std::vector<std::jthread> thread_;  // the last to come: it uses the rest
};

}  // namespace Srctl
