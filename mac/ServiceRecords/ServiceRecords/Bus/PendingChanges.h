#pragma once

#include "SRLib/Provider/StoreSnapshot.h"
#include "libs/Bus/SdBus.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// The calls of one service that change the list and have not been answered yet, each with the calls of the
// same sender that came behind it: a sender's calls are answered in the order of their arrival, and nobody
// waits for another one's. Main thread.
class PendingChanges {
 public:
  using Stores = std::shared_ptr<const ServiceRecords::StoreSnapshot>;
  // Answers a call, from these stores where it reads the list. Answers the bus library's negative error code
  // on failure.
  using Answer = std::function<int(sd_bus_message* call, const Stores& stores)>;

  // What came of a change, and the list right after it.
  struct Outcome {
    bool changed = false;
    Stores stores;
  };

  // Takes up a call whose reply has a boolean ("b") or nothing (""), and returns its number.
  [[nodiscard]] std::uint64_t Begin(sd_bus_message* call, const char* resultTypes);
  // Sends the reply, and answers the calls that came behind it.
  void End(std::uint64_t number, const Outcome& outcome);

  // Keeps the call behind its sender's latest change; false when there is none to wait for.
  [[nodiscard]] bool KeepBehind(sd_bus_message* call, const Answer& answer);

 private:
  struct Kept {
    BusMessagePtr call;
    Answer answer;
  };
  struct Change {
    std::string sender;
    BusMessagePtr reply;
    const char* resultTypes;
    std::vector<Kept> behind;
  };

  std::map<std::uint64_t, Change> changes_;
  std::map<std::string, std::uint64_t> latest_;  // of each sender
  std::uint64_t next_ = 0;
};
