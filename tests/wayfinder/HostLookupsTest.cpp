#include "libs/Wayfinder/Probing/HostLookups.h"
#include "wayfinder/HangingResolver.h"
#include "wayfinder/ProcessCounts.h"

#include <gmock/gmock.h>
#include <poll.h>

#include <optional>
#include <stdexcept>

using testsupport::ComesTrue;
using testsupport::HangingResolver;
using testsupport::RunningThreads;
using Wayfinding::HostLookups;

namespace {

void WaitForEnd(const HostLookups& lookups) {
  pollfd state{lookups.Descriptor(), POLLIN, 0};
  ASSERT_EQ(::poll(&state, 1, 20'000), 1);
}

TEST(HostLookups, ALookupThatEndsIsToldByTheDescriptor) {
  HostLookups lookups([](const std::string& host) {
    return std::vector<std::string>{host + "1", host + "2"};
  });
  const auto lookup = lookups.Start("10.0.0.", "https://store");
  WaitForEnd(lookups);
  EXPECT_TRUE(lookup->HasEnded());
  EXPECT_THAT(lookup->Addresses(), testing::ElementsAre("10.0.0.1", "10.0.0.2"));
  lookups.ClearEnded();
  pollfd state{lookups.Descriptor(), POLLIN, 0};
  EXPECT_EQ(::poll(&state, 1, 0), 0) << "told once";
}

TEST(HostLookups, AResolverThatThrowsFindsNothing) {
  HostLookups lookups(
      [](const std::string& /*host*/) -> std::vector<std::string> { throw std::runtime_error("no"); });
  const auto lookup = lookups.Start("host", "https://store");
  WaitForEnd(lookups);
  EXPECT_THAT(lookup->Addresses(), testing::IsEmpty());
}

// Lookups that hang until the end of the case.
class HangingLookups : public testing::Test {
 protected:
  ~HangingLookups() override {
    resolver_.Release();
    EXPECT_TRUE(ComesTrue([this] { return RunningThreads() <= threadsBefore_; }));
  }

  // Returns how many of them there are.
  std::size_t StartAll(int count, const std::string& store) {
    std::size_t started = 0;
    for (int i = 0; i < count; ++i) {
      if (lookups_->Start("host" + std::to_string(i) + "." + store, store) != nullptr) ++started;
    }
    return started;
  }

  const long threadsBefore_ = RunningThreads();
  HangingResolver resolver_;
  std::optional<HostLookups> lookups_{resolver_.Resolver()};
};

TEST_F(HangingLookups, NeitherPileUpNorHoldUpTheEnd) {
  std::size_t started = 0;
  for (int i = 0; i < 1000; ++i) started += StartAll(2, "https://store" + std::to_string(i));
  EXPECT_EQ(started, HostLookups::kMostThreads);
  EXPECT_LE(RunningThreads(), threadsBefore_ + static_cast<long>(HostLookups::kMostThreads));
  lookups_.reset();
}

TEST_F(HangingLookups, LeaveThreadsToOtherStores) {
  for (int i = 0; i < 16; ++i) {
    const std::string store = "https://store" + std::to_string(i);
    EXPECT_GT(StartAll(1000, store), 0U) << store;
    EXPECT_EQ(lookups_->Start("another", store), nullptr) << store << " has its share";
  }
  EXPECT_NE(lookups_->Start("host", "https://other"), nullptr);
}

TEST_F(HangingLookups, AreSharedByName) {
  const auto lookup = lookups_->Start("host", "https://one");
  EXPECT_EQ(lookups_->Start("host", "https://one"), lookup);
  EXPECT_EQ(lookups_->Start("host", "https://two"), lookup);
  EXPECT_NE(lookups_->Start("other", "https://one"), lookup);
  resolver_.Release();
  ASSERT_TRUE(ComesTrue([&lookup] { return lookup->HasEnded(); }));
  lookups_->ClearEnded();
  EXPECT_NE(lookups_->Start("host", "https://one"), lookup) << "an answer is not kept";
}

TEST_F(HangingLookups, OfTheNetworkBeforeAreCountedAndNotShared) {
  const auto lookup = lookups_->Start("host", "https://one");
  lookups_->TakeNewNetwork();
  EXPECT_NE(lookups_->Start("host", "https://one"), lookup);
  std::size_t started = 2;
  for (int i = 0; i < 1000; ++i) {
    lookups_->TakeNewNetwork();
    if (lookups_->Start("host", "https://" + std::to_string(i)) != nullptr) ++started;
  }
  EXPECT_EQ(started, HostLookups::kMostThreads);
}

TEST(HostLookups, TheSystemKnowsThisMachinesName) {
  EXPECT_THAT(Wayfinding::ResolveWithSystem("localhost"), testing::Not(testing::IsEmpty()));
  EXPECT_THAT(Wayfinding::ResolveWithSystem("not a host name"), testing::IsEmpty());
}

TEST(HostLookups, AnAddressOfOneLinkAloneIsLeftOut) {
  EXPECT_THAT(Wayfinding::ResolveWithSystem("fe80::1%lo"), testing::IsEmpty());
}

}  // namespace
