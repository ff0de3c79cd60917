#pragma once

#include "libs/Wayfinder/LocationService.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

inline constexpr char kStore[] = "https://store.example/Main";

struct StoreAndBeacons {
  std::string url;
  std::vector<std::string> internal;
  std::vector<std::string> external;
};

// A location service whose messages and changes are kept. Any thread.
class RecordedService {
 public:
  using Change = std::pair<std::string, std::uint32_t>;

  // Without a resolver, no name is found.
  explicit RecordedService(Wayfinding::HostLookups::Resolver resolver = {},
                           std::chrono::milliseconds pauseAfterFailure = std::chrono::milliseconds(1));

  void SetStores(const std::vector<StoreAndBeacons>& stores);
  [[nodiscard]] std::uint32_t LocationOf(const std::string& url);
  // In English.
  [[nodiscard]] std::string ReasonFor(const std::string& url);
  // The service's clock jumps.
  void PassTime(std::chrono::seconds time) { passed_ += time.count(); }
  // The service's clock goes on only when it jumps.
  void StopTime() { stoppedAt_ = std::chrono::steady_clock::now(); }

  // The service's thread does the work behind the first message that contains the text. Before SetStores.
  void WhenItLogs(const std::string& text, std::function<void()> work) {
    awaitedText_ = text;
    work_ = std::move(work);
  }

  // The service's thread meets an exception at its next message.
  void FailOnce() { fails_ = true; }
  [[nodiscard]] std::uint32_t Flags() const { return service_->Flags(); }

  // Waits until the store's last change is this location; false when it never is.
  [[nodiscard]] bool WaitForLocation(const std::string& url, std::uint32_t location);
  // Waits for so many messages that contain the text.
  [[nodiscard]] bool WaitForMessage(const std::string& text, int count = 1);
  [[nodiscard]] std::vector<std::string> Messages() const;
  [[nodiscard]] std::vector<Change> Changes() const;
  // Ends the service's thread.
  void End() { service_.reset(); }

 private:
  [[nodiscard]] Wayfinding::LocationParts Parts(Wayfinding::HostLookups::Resolver resolver);
  [[nodiscard]] std::chrono::steady_clock::time_point Now() const;
  void Record(const std::string& message);

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> messages_;
  std::vector<Change> changes_;
  std::atomic<long> passed_ = 0;
  std::atomic<std::chrono::steady_clock::time_point> stoppedAt_{std::chrono::steady_clock::time_point()};
  std::atomic<bool> fails_ = false;
  std::string awaitedText_;
  std::function<void()> work_;
  std::optional<Wayfinding::LocationService> service_;
};

}  // namespace TestSupport
