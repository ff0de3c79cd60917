#include "bus/TwoPrograms.h"
#include "support/EnvironmentVariable.h"
#include "support/LoopbackListener.h"

#include <cerrno>

using namespace std::chrono_literals;

namespace {

class CallsTest : public TwoPrograms {
 protected:
  static constexpr Bus::Service kNobody{"com.morvane.test.Nobody", kPath, "a.b"};
  static constexpr Bus::Service kBus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
};

TEST_F(CallsTest, ANameHasAnOwnerOnceItIsRequestedAndOnlyOne) {
  EXPECT_TRUE(caller_.HasOwner(kName));
  EXPECT_FALSE(caller_.HasOwner(kNobody.name));
  const Bus::Result<> again = caller_.RequestName(kName);
  ASSERT_FALSE(again);
  EXPECT_EQ(again.Failure().code, EEXIST);
}

TEST_F(CallsTest, AnAnswerIsWaitedFor) {
  const auto owner = caller_.Call<std::string>(kBus, {}, "GetNameOwner", std::string(kName));
  ASSERT_TRUE(owner);
  EXPECT_EQ(owner->front(), ':');
}

TEST_F(CallsTest, NobodyIsToldFromOtherErrors) {
  for (const bool startsService : {true, false}) {
    const auto result = caller_.Call<>(kNobody, {.startsService = startsService}, "method");
    ASSERT_FALSE(result);
    EXPECT_TRUE(result.Failure().IsForWantOfOwner()) << result.Failure().name;
  }
  ServeMethod([] {});
  const auto unknown = Call<>(kService, "other");
  ASSERT_FALSE(unknown);
  EXPECT_FALSE(unknown.Failure().IsForWantOfOwner());
  EXPECT_EQ(unknown.Failure().name, "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(CallsTest, ACallThatIsNotAnsweredEndsWithItsTime) {
  const auto result = caller_.Call<>(kService, {.timeOut = 1ms}, "method");
  ASSERT_FALSE(result);
  EXPECT_EQ(result.Failure().code, ETIMEDOUT);
}

TEST_F(CallsTest, APropertyIsAskedForByItsName) {
  const auto interfaces = caller_.Property<std::vector<std::string>>(kBus, {}, "Interfaces");
  ASSERT_TRUE(interfaces) << interfaces.Failure().text;
  EXPECT_FALSE(caller_.Property<bool>(kBus, {}, "Interfaces")) << "it is of another type";
}

TEST_F(CallsTest, AnErrorReachesTheHandlerOfTheReply) {
  std::string name;
  const auto slot = caller_.CallAsync(kNobody, {}, "method", [&name](const Bus::Result<Bus::Message>& reply) {
    name = reply ? "answered" : reply.Failure().name;
  });
  ASSERT_TRUE(ProcessUntil([&] { return !name.empty(); }));
  EXPECT_EQ(name, "org.freedesktop.DBus.Error.ServiceUnknown");
}

TEST_F(CallsTest, NobodyIsToldOfTheReplyOnceTheSlotIsGone) {
  ServeMethod([] {});
  bool answered = false;
  {
    const auto slot = caller_.CallAsync(kService, {}, "method",
                                        [&](const Bus::Result<Bus::Message>& /*reply*/) { answered = true; });
    ASSERT_TRUE(slot);
  }
  EXPECT_TRUE(CallMethod<>()) << "the reply before has come, too";
  EXPECT_FALSE(answered);
}

TEST_F(CallsTest, TheHandlerOfAReplyMayLetItsSlotGoAndThrow) {
  ServeMethod([] {});
  const auto kept = std::make_shared<int>(0);
  Bus::Slot slot;
  ASSERT_TRUE(Bus::Keep(slot, caller_.CallAsync(kService, {}, "method",
                                                [&slot, kept](const Bus::Result<Bus::Message>& /*reply*/) {
                                                  slot.reset();
                                                  ++*kept;
                                                  throw 5;
                                                })));
  ASSERT_TRUE(ProcessUntil([&] { return *kept == 1; }));
  EXPECT_EQ(kept.use_count(), 1);
  EXPECT_TRUE(CallMethod<>());
}

TEST_F(CallsTest, AConnectionIsReadyOrItsTimeIsOver) {
  EXPECT_TRUE(caller_.AwaitReady(std::chrono::steady_clock::now() + 20s));
  const TestSupport::LoopbackListener silent;
  const TestSupport::EnvironmentVariable address("DBUS_SYSTEM_BUS_ADDRESS",
                                                 "tcp:host=127.0.0.1,port=" + std::to_string(silent.port));
  auto connection = Bus::Connection::ToSystemBus();
  ASSERT_TRUE(connection);
  const Bus::Result<> ready = connection->AwaitReady(std::chrono::steady_clock::now() + 5ms);
  ASSERT_FALSE(ready);
  EXPECT_EQ(ready.Failure().code, ETIMEDOUT);
}

TEST_F(CallsTest, ThereIsNoConnectionWhereThereIsNoBus) {
  EXPECT_FALSE(Bus::Connection::To("unix:path=/nonexistent/bus"));
}

}  // namespace
