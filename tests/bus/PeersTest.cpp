#include "bus/TwoPrograms.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class PeersTest : public TwoPrograms {
 protected:
  static bool IsSameFile(int one, int other) {
    struct stat left {};
    struct stat right {};
    return ::fstat(one, &left) == 0 && ::fstat(other, &right) == 0 && left.st_ino == right.st_ino &&
           left.st_dev == right.st_dev;
  }

  std::string callerName_;
};

TEST_F(PeersTest, AHandlerIsToldWhoCallsAndMayAnswerAValueOrAnError) {
  ServeMethod([this](const Bus::Caller& caller, const std::string& text) -> Bus::Result<std::uint64_t> {
    callerName_ = caller.name;
    if (text.empty()) return Bus::Error::InvalidArguments("nothing");
    return std::uint64_t{text.size()};
  });
  const auto answer = CallMethod<std::uint64_t>(std::string("four"));
  ASSERT_TRUE(answer);
  EXPECT_EQ(*answer, 4U);
  EXPECT_TRUE(callerName_.starts_with(":")) << callerName_;
  const auto refused = CallMethod<std::uint64_t>(std::string());
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Failure().name, "org.freedesktop.DBus.Error.InvalidArgs");
  EXPECT_EQ(refused.Failure().text, "nothing");
}

TEST_F(PeersTest, OfOptionsTheDescriptorsAndTheNamedTextsArrive) {
  Bus::Options taken;
  ServeMethod([&](Bus::Options options) { taken = std::move(options); });
  const Files::FileDescriptor file(::open("/dev/null", O_RDWR | O_CLOEXEC));
  const Bus::Texts texts{{"one", "1"}, {"two", ""}};
  Bus::Options options;
  options["file"] = Files::FileDescriptor(::fcntl(file.Get(), F_DUPFD_CLOEXEC, 0));
  options["texts"] = texts;
  options["none"] = Bus::Texts();
  ASSERT_TRUE(CallMethod<>(options));
  ASSERT_EQ(taken.size(), 3U);
  const auto& descriptor = std::get<Files::FileDescriptor>(taken["file"]);
  EXPECT_TRUE(IsSameFile(descriptor.Get(), file.Get()));
  EXPECT_EQ(::fcntl(descriptor.Get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(std::get<Bus::Texts>(taken["texts"]), texts);
  EXPECT_THAT(std::get<Bus::Texts>(taken["none"]), IsEmpty());

  ASSERT_TRUE(CallMethod<>(PropertyList::Dictionary{{"file", "text"}, {"other", true}}));
  EXPECT_EQ(taken.size(), 2U);
  EXPECT_TRUE(std::holds_alternative<std::monostate>(taken["file"]));
  ASSERT_TRUE(CallMethod<>(PropertyList::Dictionary()));
  EXPECT_THAT(taken, IsEmpty());
}

TEST_F(PeersTest, ASignalToOneProgramReachesNoOther) {
  constexpr char kRule[] = "type='signal',interface='com.morvane.test.Interface'";
  std::vector<std::string> seen;
  Bus::Connection other = std::move(*Bus::Connection::To(bus_.Address()));
  const auto take = [&seen](const char* who) {
    return [&seen, who](const Bus::Message& /*signal*/) { seen.emplace_back(who); };
  };
  const auto match = caller_.Match(kRule, take("caller"));
  const auto matchOfOther = other.MatchLater(kRule, take("other"));
  ASSERT_TRUE(match && matchOfOther);
  ServeMethod([this](const Bus::Caller& caller) { callerName_ = caller.name; });
  ASSERT_TRUE(CallMethod<>());
  other.ProcessArrived();
  ASSERT_TRUE(service_.EmitTo(callerName_.c_str(), kPath, kService.interface, "Posted"));
  ASSERT_TRUE(service_.Emit(kPath, kService.interface, "Posted"));
  ASSERT_TRUE(service_.Flush());
  EXPECT_TRUE(ProcessUntil([&] {
    other.ProcessArrived();
    return seen.size() == 3;
  }));
  EXPECT_THAT(seen, testing::UnorderedElementsAre("caller", "caller", "other"));
}

TEST_F(PeersTest, APeerThatLeavesIsNoticedOnceAndOneThatHasLeftIsAFailure) {
  auto peer = std::make_unique<Bus::Connection>(std::move(*Bus::Connection::To(bus_.Address())));
  ServeMethod([this](const Bus::Caller& caller) { callerName_ = caller.name; });
  bool answered = false;
  const auto call = peer->CallAsync(kService, {}, "method",
                                    [&](const Bus::Result<Bus::Message>& /*reply*/) { answered = true; });
  ASSERT_TRUE(call);
  ASSERT_TRUE(ProcessUntil([&] {
    static_cast<void>(peer->Process());
    return answered;
  }));
  int left = 0;
  Bus::PeerWatch watch;
  ASSERT_TRUE(Bus::Keep(watch, service_.WatchPeer(callerName_, [&] {
    ++left;
    watch.reset();  // the handler may let it go
  })));
  service_.ProcessArrived();
  EXPECT_EQ(left, 0);
  peer.reset();
  EXPECT_TRUE(ProcessUntil([&] { return left == 1; }));
  service_.ProcessArrived();
  EXPECT_EQ(left, 1);
  EXPECT_FALSE(service_.WatchPeer(callerName_, [&] { ++left; }));
  EXPECT_EQ(left, 1);
}

TEST_F(PeersTest, APeerIsNotWatchedOnceTheWatchIsGone) {
  bool left = false;
  auto peer = std::make_unique<Bus::Connection>(std::move(*Bus::Connection::To(bus_.Address())));
  ASSERT_TRUE(peer->RequestName("com.morvane.test.Peer"));
  {
    const auto watch = service_.WatchPeer("com.morvane.test.Peer", [&] { left = true; });
    ASSERT_TRUE(watch);
  }
  peer.reset();
  service_.ProcessArrived();
  EXPECT_FALSE(left);
}

}  // namespace
