#pragma once

#include "libs/Bus/SdBus.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

struct BusError : std::runtime_error {
  BusError(std::string errorName, const std::string& text)
      : runtime_error(text), name(std::move(errorName)) {}
  std::string name;
};

// Another program on the bus: calls methods, owns names, sees notifications. Values cross as JSON:
// dictionaries are objects, arrays arrays, numbers numbers. Everything throws on failure. One thread.
// It does without our wrapper (libs/Bus), which it checks from outside.
class BusClient {
 public:
  explicit BusClient(const std::string& address);

  // Calls a method with string arguments and returns its results: null for none, the value for one,
  // an array for several.
  nlohmann::json Call(const std::string& name, const std::string& path, const std::string& interface,
                      const std::string& method, const std::vector<std::string>& arguments = {});

  nlohmann::json ServiceRecords(const std::string& method, const std::vector<std::string>& arguments = {});
  nlohmann::json Beacons(const std::string& method, const std::vector<std::string>& arguments = {});
  // The call is sent; WaitForReply with the returned number waits for its end, and returns its result.
  std::uint64_t StartServiceRecords(const std::string& method,
                                    const std::vector<std::string>& arguments = {});
  nlohmann::json WaitForReply(std::uint64_t call);
  [[nodiscard]] bool HasReply(std::uint64_t call);
  // The calls that have been answered, in the order of their replies.
  [[nodiscard]] std::vector<std::uint64_t> AnsweredCalls();

  // The desktop's file-open event.
  void OpenFiles(const std::vector<std::string>& uris);
  [[nodiscard]] std::string Introspect(const std::string& name, const std::string& path);

  [[nodiscard]] bool HasOwner(const std::string& name);
  void OwnName(const std::string& name);
  // Offers an application's object and counts how often it is activated.
  void OfferApplication(const std::string& path, int& activations);

  void PostNotification(const std::string& name, const std::string& object);
  // Notifications seen so far, as "name object".
  [[nodiscard]] std::vector<std::string> Notifications();

  // Handles messages until the condition holds; false when it does not within the time.
  [[nodiscard]] bool WaitUntil(const std::function<bool()>& condition,
                               std::chrono::milliseconds limit = std::chrono::seconds(60));
  [[nodiscard]] bool WaitUntilOwned(const std::string& name, bool owned);

 private:
  struct StartedCall {
    BusClient* client;
    std::uint64_t number;
    std::optional<std::string> error;  // its name, or empty; nothing before the reply
    nlohmann::json result;
  };

  static int RecordReply(sd_bus_message* message, void* call, sd_bus_error* error);
  Bus::BusMessagePtr NewCall(const std::string& name, const std::string& path, const std::string& interface,
                             const std::string& method, const std::vector<std::string>& arguments);
  Bus::BusMessagePtr Send(const Bus::BusMessagePtr& call);
  void ProcessPending();

  Bus::BusPtr bus_;
  std::vector<std::string> notifications_;
  std::map<std::uint64_t, StartedCall> started_;
  std::vector<std::uint64_t> answered_;
  std::uint64_t nextCall_ = 1;
};

}  // namespace TestSupport
