#pragma once

#include "SRLib/Provider/StoreSnapshot.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Agent {

// The calls of one service that change the list and have not been answered yet, each with the calls of the
// same caller that came behind it: a caller's calls are answered in the order of their arrival, and nobody
// waits for another one's. Main thread.
class PendingChanges {
 public:
  using Stores = std::shared_ptr<const ServiceRecords::StoreSnapshot>;
  // Answers a change. Like Answer, it throws nothing.
  using Reply = std::function<void(bool changed)>;
  // Answers a call, from these stores where it reads the list.
  using Answer = std::function<void(const Stores& stores)>;

  // What came of a change, and the list right after it.
  struct Outcome {
    bool changed = false;
    Stores stores;
  };

  // Takes up a call, and returns its number.
  [[nodiscard]] std::uint64_t Begin(const std::string& caller, Reply reply);
  // Answers it, and the calls that came behind it.
  void End(std::uint64_t number, const Outcome& outcome);

  // Keeps the call behind its caller's latest change; false when there is none to wait for.
  [[nodiscard]] bool KeepBehind(const std::string& caller, const Answer& answer);

 private:
  struct Change {
    std::string caller;
    Reply reply;
    std::vector<Answer> behind;
  };

  std::map<std::uint64_t, Change> changes_;
  std::map<std::string, std::uint64_t> latest_;  // of each caller
  std::uint64_t next_ = 0;
};

}  // namespace Agent
