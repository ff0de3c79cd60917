#pragma once

#include "bus/StoreInfo.h"
#include "libs/Bus/Connection.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Srctl {

// A connection to the agent over the user's session bus; the bus starts the agent when it is not running. One
// thread. Every operation that gets no answer returns nothing (or false) and leaves the reason in Problem().
// All text is UTF-8.
class AgentClient {
 public:
  // Nothing, and the reason in `problem`, when there is no session bus. `isLate` is called once, when an
  // answer takes so long that whoever waits for it would wonder.
  static std::optional<AgentClient> Connect(std::string& problem, std::function<void()> isLate = {});

  [[nodiscard]] std::optional<std::vector<StoreInfo>> AllStores();
  // An empty id in the result says that the agent has no such store.
  [[nodiscard]] std::optional<StoreInfo> StoreForID(const std::string& id);

  // Whether the agent did it.
  [[nodiscard]] std::optional<bool> DeleteStore(const std::string& id);
  [[nodiscard]] std::optional<bool> SetDefaultGatewayForStoreID(const std::string& id,
                                                                const std::string& gateway);
  [[nodiscard]] std::optional<bool> SetDefaultGatewayForStoreURL(const std::string& url,
                                                                 const std::string& gateway);

  // The agent does not tell what it made of the document.
  [[nodiscard]] bool HandOverDiscoveryDocument(const std::string& document);

  // The folder of the dialogs' plug-in.
  [[nodiscard]] std::optional<std::string> UIBundlePath();

  // Whether the agent's list and its file agree: "good", or one of these.
  static constexpr char kUnsaved[] = "unsaved";
  static constexpr char kUnreadable[] = "unreadable";
  [[nodiscard]] std::optional<std::string> StateOfSavedStores();

  // A network location, as Wayfinder numbers them.
  [[nodiscard]] std::optional<std::uint64_t> LocationForStore(const std::string& url);
  // The same, but while it is being decided, waits until it is, or for the time. Does not ask again and
  // again: the agent announces a change.
  [[nodiscard]] std::optional<std::uint64_t> DecidedLocationForStore(const std::string& url,
                                                                     std::chrono::seconds limit);
  // With the reason, once it is decided.
  [[nodiscard]] std::optional<LocationInfo> ExplainedLocationForStore(const std::string& url);
  // No element or one.
  [[nodiscard]] std::optional<std::vector<CurrentGatewayInfo>> CurrentGatewayForStore(const std::string& url);
  // Bits, as Wayfinder defines them.
  [[nodiscard]] std::optional<std::uint32_t> ReachabilityFlags();

  // Tells everybody on the bus; true when the notification is on its way.
  [[nodiscard]] bool PostNotification(const std::string& name, const std::string& object);

  [[nodiscard]] const std::string& Problem() const { return problem_; }

 private:
  AgentClient(Bus::Connection bus, std::function<void()> isLate)
      : bus_(std::move(bus)), isLate_(std::move(isLate)) {}

  // The values of a reply.
  template <class... Results>
  [[nodiscard]] std::optional<Bus::Reading<Results...>> Read(const Bus::Result<Bus::Message>& reply);
  template <class... Results, class... Arguments>
  [[nodiscard]] std::optional<Bus::Reading<Results...>> Ask(const Bus::Service& service,
                                                            const Bus::CallOptions& options,
                                                            const char* method,
                                                            const Arguments&... arguments);
  // As an agent tells it that was started before this program was brought up to date.
  [[nodiscard]] std::optional<LocationInfo> LocationForStoreInEnglish(const std::string& url);
  // Waits for the reply, and says so when that takes long.
  template <class... Arguments>
  [[nodiscard]] Bus::Result<Bus::Message> CallPatiently(const Bus::Service& service,
                                                        const Bus::CallOptions& options, const char* method,
                                                        const Arguments&... arguments);
  // Handles messages until `done` answers true, which a handler brings about. False, and Problem() set, when
  // the connection breaks; true also at the deadline.
  [[nodiscard]] bool WaitFor(const std::function<bool()>& done,
                             std::chrono::steady_clock::time_point deadline);
  void Fail(const std::string& what, const Bus::Error& error);

  Bus::Connection bus_;
  std::function<void()> isLate_;  // empty once it was called
  std::string problem_;
};

}  // namespace Srctl
