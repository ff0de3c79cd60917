#pragma once

#include "libs/Bus/Connection.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

// A program that has files opened, and hears what becomes of them and of the list. Throws on failure. One
// thread.
class OpeningClient {
 public:
  using Texts = std::map<std::string, std::string>;

  struct Finished {
    std::uint64_t id = 0;
    std::string outcome;
    std::vector<Texts> stores;
  };

  explicit OpeningClient(const std::string& address);

  Bus::Result<std::uint64_t> TryOpen(const std::string& path, const Bus::Options& options);
  // `terminal`: a descriptor for the option, or none.
  Bus::Result<std::uint64_t> TryOpen(const std::string& path, int terminal = -1);
  std::uint64_t Open(const std::string& path, int terminal = -1);
  // Waits for that opening's end.
  Finished Await(std::uint64_t id);
  [[nodiscard]] bool HasFinished(std::uint64_t id);
  // Opens the file and waits. `desktop`: variables for the option.
  Finished OpenAndAwait(const std::string& path);
  Finished OpenAndAwait(const std::string& path, const Bus::Texts& desktop);

  // Handles messages until the condition holds; false when it does not within the time.
  [[nodiscard]] bool WaitUntil(const std::function<bool()>& condition);

  // What has been told so far, in the order in which it came: changes as "added s1", and so on.
  [[nodiscard]] const std::vector<std::string>& Told() const { return told_; }
  [[nodiscard]] const std::vector<Texts>& Changes() const { return changes_; }

 private:
  void TakeFinished(const Bus::Message& signal);
  void TakeChanges(const Bus::Message& signal);

  Bus::Connection bus_;
  Bus::Slot signals_;
  std::map<std::uint64_t, Finished> finished_;
  std::vector<std::string> told_;
  std::vector<Texts> changes_;
};

}  // namespace TestSupport
