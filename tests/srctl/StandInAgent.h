#pragma once

#include "libs/Bus/Connection.h"
#include "libs/PropertyList/PropertyList.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Has the agent's names on a bus and answers about the network what a test sets; files that it is to open it
// only notes. Like an agent of before an update it says only in English why a location is what it is. Throws
// on failure. One thread; it answers only while ServeUntil runs.
class StandInAgent {
 public:
  explicit StandInAgent(const std::string& address);
  StandInAgent(const StandInAgent&) = delete;
  StandInAgent& operator=(const StandInAgent&) = delete;

  std::uint64_t location = 0;
  std::string reason;  // of the location
  std::uint32_t flags = 0;
  bool takesFiles = true;  // or else it has too many already

  // The stores' URLs for which the location was asked.
  [[nodiscard]] const std::vector<std::string>& Questions() const { return questions_; }
  // How often it was asked why a location is what it is.
  [[nodiscard]] std::size_t Explanations() const { return explanations_; }
  // The files that it was asked to open; the id of each is its place, from 1.
  [[nodiscard]] const std::vector<std::string>& Opened() const { return opened_; }

  // From now on it tells that it has these.
  void ServeStores(const std::vector<PropertyList::Dictionary>& stores);

  // Notifies everybody that the location relative to the store has changed.
  void AnnounceLocation(const std::string& storeURL);
  // Tells everybody what became of a file, and of the list.
  void Finish(std::uint64_t id, const std::string& outcome,
              const std::vector<PropertyList::Dictionary>& stores = {});
  void AnnounceChanges(const std::vector<PropertyList::Dictionary>& changes);

  // Answers until the condition holds; false when it does not within the time.
  [[nodiscard]] bool ServeUntil(const std::function<bool()>& condition,
                                std::chrono::milliseconds limit = std::chrono::seconds(20));

 private:
  void ServeBeacons();
  void ServeOpenings();

  Bus::Connection bus_;
  Bus::Slot stores_;
  Bus::Slot beacons_;
  Bus::Slot openings_;
  std::vector<std::string> questions_;
  std::size_t explanations_ = 0;
  std::vector<std::string> opened_;
};
