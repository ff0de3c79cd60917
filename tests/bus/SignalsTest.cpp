#include "bus/TwoPrograms.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SignalsTest : public TwoPrograms {
 protected:
  static constexpr char kRule[] = "type='signal',interface='com.morvane.test.Interface'";

  void Emit(const std::string& text) {
    EXPECT_TRUE(service_.Emit(kPath, kService.interface, "Posted", text, true));
    EXPECT_TRUE(service_.Flush());
  }
  // Returns when the caller has handled what was emitted.
  void AwaitHandled() { EXPECT_TRUE(Call<>({kName, kPath, "org.freedesktop.DBus.Peer"}, "Ping")); }

  std::vector<std::string> seen_;
};

TEST_F(SignalsTest, AreSeenWithTheirValuesAndTheirSender) {
  std::string sender;
  const auto match = caller_.Match(kRule, [&](const Bus::Message& signal) {
    const auto values = signal.Read<std::string, bool>();
    seen_.push_back(values ? std::get<0>(*values) : values.Failure().text);
    sender = signal.Sender();
    EXPECT_TRUE(signal.IsSignal(kService.interface, "Posted"));
  });
  ASSERT_TRUE(match);
  Emit("one");
  Emit("two");
  AwaitHandled();
  EXPECT_THAT(seen_, ElementsAre("one", "two"));
  const auto owner =
      caller_.Call<std::string>({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"}, {},
                                "GetNameOwner", std::string(kName));
  ASSERT_TRUE(owner);
  EXPECT_EQ(sender, *owner);
}

TEST_F(SignalsTest, ReachEveryHandlerAlsoBehindOneThatThrows) {
  const auto first = caller_.Match(kRule, [this](const Bus::Message& /*signal*/) {
    seen_.emplace_back("first");
    throw std::runtime_error("first");
  });
  const auto second =
      caller_.Match(kRule, [this](const Bus::Message& /*signal*/) { seen_.emplace_back("second"); });
  Emit("x");
  AwaitHandled();
  EXPECT_THAT(seen_, testing::UnorderedElementsAre("first", "second"));
}

TEST_F(SignalsTest, AreNotSeenOnceTheSlotIsGoneWhichTheHandlerMayLetGo) {
  Bus::Slot match;
  ASSERT_TRUE(Bus::Keep(match, caller_.Match(kRule, [&](const Bus::Message& /*signal*/) {
    match.reset();
    seen_.emplace_back("once");
  })));
  Emit("x");
  Emit("y");
  AwaitHandled();
  EXPECT_THAT(seen_, ElementsAre("once"));
}

TEST_F(SignalsTest, TellOfANamesOwner) {
  const std::string name = "com.morvane.test.Other";
  const auto match = caller_.Match(Bus::MatchOwnerOf(name), [this](const Bus::Message& signal) {
    const auto owner = signal.Read<std::string, std::string, std::string>();
    seen_.emplace_back(std::get<2>(*owner).empty() ? "left" : "came");
  });
  ASSERT_TRUE(service_.RequestName(name));
  AwaitHandled();
  EXPECT_THAT(seen_, ElementsAre("came"));
}

TEST_F(SignalsTest, TellOfTheEndOfTheConnection) {
  const auto match =
      caller_.Match(Bus::MatchLoss(), [this](const Bus::Message& /*signal*/) { seen_.emplace_back("lost"); });
  AwaitHandled();
  EXPECT_THAT(seen_, IsEmpty());
  bus_.Terminate();
  EXPECT_TRUE(ProcessUntil([this] { return !seen_.empty(); }));
}

}  // namespace
