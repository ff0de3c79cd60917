#pragma once

#include "support/ServiceRecordDocument.h"
#include "support/TestAgent.h"
#include "support/TestAuthority.h"
#include "support/WebServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace TestSupport {

// A machine of one user with a store server that its system trusts. The agent is not started yet.
class AgentTest : public testing::Test {
 protected:
  static constexpr char kStoresUpdated[] = "MRVServiceRecordStoresUpdated MRVServiceRecord";

  // `environment`: for the user's programs, as NAME=value.
  explicit AgentTest(std::vector<std::string> environment = {});

  // A store whose server is the trusted one, with two gateways of which the second is the default.
  [[nodiscard]] StoreText Store(const std::string& id, const std::string& name) const;
  // A file with these stores, whose discovery documents say the same from then on.
  [[nodiscard]] std::string OpenableFile(const std::string& name, const std::vector<StoreText>& stores);

  // What the server answers at the store's URL.
  void Serve(const StoreText& store, const std::string& content) const;

  // Hands the file to the agent and waits until it has been handled.
  void Open(const std::string& file);
  // Starts the agent with a plug-in whose dialogs of that kind never return, not even at termination.
  void StartWithHanging(const std::string& dialog);
  // Until so many of them hang.
  [[nodiscard]] bool WaitForHanging(std::size_t count);
  [[nodiscard]] std::size_t Hanging() const;

  // Leaves the question open whether "New" replaces "Old", the store "s1". Whoever changes the list waits.
  void AskToReplace();
  // Returns when the agent has taken up everything that this program has sent to its main service.
  static void AwaitArrival(BusClient& sender);
  [[nodiscard]] std::size_t CountNotifications();
  [[nodiscard]] std::vector<std::string> StoreIDs();
  [[nodiscard]] static std::string StateOfSavedStores(BusClient& reader);

  WebServer server_;
  TestAgent agent_;
};

}  // namespace TestSupport
