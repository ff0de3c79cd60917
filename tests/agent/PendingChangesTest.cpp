#include "Bus/PendingChanges.h"
#include "agent/ServiceOnBus.h"
#include "libs/Bus/ServiceNames.h"
#include "support/StoreBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

// A service whose changes end when the test says so. Its reads tell how many stores there are.
class PendingChangesTest : public testing::Test {
 protected:
  Bus::Interface Interface() {
    Bus::Interface interface(Bus::ServiceNames::kServiceRecordsInterface);
    interface.Method(
        kChange, {"id"}, {"changed"}, [this](const Bus::Deferred<bool>& call, const std::string& /*id*/) {
          numbers_.push_back(changes_.Begin(call.Caller(), [call](bool changed) { call.Answer(changed); }));
        });
    interface.Method(kRead, {}, {"count"}, [this](const Bus::Deferred<std::string>& call) {
      const auto answer = [call](const Agent::PendingChanges::Stores& stores) {
        call.Answer(std::to_string(stores->size()));
      };
      if (!changes_.KeepBehind(call.Caller(), answer)) answer(Stores(0));
    });
    return interface;
  }

  static Agent::PendingChanges::Stores Stores(std::size_t count) {
    ServiceRecords::StoreMap stores;
    for (std::size_t i = 0; i < count; ++i)
      stores.emplace(std::to_wstring(i), TestSupport::Store(std::to_wstring(i), L"https://s"));
    return std::make_shared<const ServiceRecords::StoreSnapshot>(stores);
  }

  std::uint64_t Call(const char* method) {
    const std::uint64_t call =
        service_.Client().StartServiceRecords(method, method == kChange ? Arguments{"s"} : Arguments{});
    service_.AwaitPassedOn();
    service_.Connection().ProcessArrived();
    return call;
  }
  // The change that arrived as this one, counted from 0.
  void End(std::size_t change, bool changed, std::size_t stores) {
    changes_.End(numbers_.at(change), {changed, Stores(stores)});
  }
  nlohmann::json Reply(std::uint64_t call) { return service_.Client().WaitForReply(call); }

  using Arguments = std::vector<std::string>;
  static constexpr const char* kChange = "deleteStore";
  static constexpr const char* kRead = "allStores";

  Agent::PendingChanges changes_;
  std::vector<std::uint64_t> numbers_;
  ServiceOnBus service_{Interface()};
};

TEST_F(PendingChangesTest, OneThatEndsBehindALaterOneIsAnsweredWithWhatCameBehindIt) {
  const std::uint64_t first = Call(kChange);
  const std::uint64_t behindFirst = Call(kRead);
  const std::uint64_t second = Call(kChange);
  const std::uint64_t behindSecond = Call(kRead);
  End(1, true, 1);
  EXPECT_EQ(Reply(second), true);
  EXPECT_EQ(Reply(behindSecond), "1");
  End(0, false, 2);
  EXPECT_EQ(Reply(first), false);
  EXPECT_EQ(Reply(behindFirst), "2");
  EXPECT_THAT(service_.Client().AnsweredCalls(), ElementsAre(second, behindSecond, first, behindFirst));
}

TEST_F(PendingChangesTest, AReadWaitsForTheLatestOneAlsoWhenAnEarlierOneHasEnded) {
  const std::uint64_t first = Call(kChange);
  const std::uint64_t second = Call(kChange);
  End(0, true, 1);
  const std::uint64_t read = Call(kRead);
  EXPECT_EQ(Reply(first), true);
  End(1, true, 2);
  EXPECT_EQ(Reply(read), "2");
  EXPECT_THAT(service_.Client().AnsweredCalls(), ElementsAre(first, second, read));
}

TEST_F(PendingChangesTest, NothingIsLeftBehindThoseThatHaveEnded) {
  for (const std::vector<std::size_t>& order : {std::vector<std::size_t>{0, 1}, {3, 2}}) {
    Call(kChange);
    Call(kChange);
    for (const std::size_t change : order) End(change, true, 5);
    EXPECT_EQ(Reply(Call(kRead)), "0") << "answered at once";
  }
}

}  // namespace
