#include "libs/Wayfinder/Probing/HostLookups.h"
#include "wayfinder/HangingResolver.h"
#include "wayfinder/ProcessCounts.h"

#include <gmock/gmock.h>
#include <poll.h>

#include <optional>
#include <stdexcept>

using TestSupport::ComesTrue;
using TestSupport::HangingResolver;
using TestSupport::RunningThreads;
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
  EXPECT_TRUE(Wayfinding::HasEnded(*lookup));
  EXPECT_THAT(lookup->get(), testing::ElementsAre("10.0.0.1", "10.0.0.2"));
  lookups.ClearEnded();
  pollfd state{lookups.Descriptor(), POLLIN, 0};
  EXPECT_EQ(::poll(&state, 1, 0), 0) << "told once";
}

TEST(HostLookups, AResolverThatThrowsFindsNothing) {
  HostLookups lookups(
      [](const std::string& /*host*/) -> std::vector<std::string> { throw std::runtime_error("no"); });
  const auto lookup = lookups.Start("host", "https://store");
  WaitForEnd(lookups);
  EXPECT_THAT(lookup->get(), testing::IsEmpty());
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
      if (lookups_->Start("host" + std::to_string(i) + "." + store, store)) ++started;
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
    EXPECT_FALSE(lookups_->Start("another", store)) << store << " has its share";
  }
  EXPECT_TRUE(lookups_->Start("host", "https://other"));
}

TEST_F(HangingLookups, AreSharedByName) {
  const auto first = lookups_->Start("host", "https://one");
  const auto again = lookups_->Start("host", "https://two");
  const auto other = lookups_->Start("other", "https://one");
  resolver_.Release();
  for (const auto& lookup : {first, again, other})
    EXPECT_THAT(lookup->get(), testing::ElementsAre("127.0.0.1"));
  EXPECT_THAT(resolver_.Asked(), testing::UnorderedElementsAre("host", "other"));
  lookups_->ClearEnded();
  EXPECT_FALSE(lookups_->Start("host", "https://one")->get().empty());
  EXPECT_EQ(resolver_.Asked().size(), 3U) << "an answer is not kept";
}

TEST_F(HangingLookups, OfTheNetworkBeforeAreCountedAndNotShared) {
  std::size_t started = 0;
  for (int i = 0; i < 1000; ++i) {
    if (lookups_->Start("host", "https://" + std::to_string(i))) ++started;
    lookups_->TakeNewNetwork();
  }
  EXPECT_EQ(started, HostLookups::kMostThreads);
  EXPECT_TRUE(ComesTrue([this] { return resolver_.Asked().size() == HostLookups::kMostThreads; }));
}

TEST(HostLookups, TheSystemKnowsThisMachinesName) {
  EXPECT_THAT(Wayfinding::ResolveWithSystem("localhost"), testing::Not(testing::IsEmpty()));
  EXPECT_THAT(Wayfinding::ResolveWithSystem("not a host name"), testing::IsEmpty());
}

TEST(HostLookups, AnAddressOfOneLinkAloneIsLeftOut) {
  EXPECT_THAT(Wayfinding::ResolveWithSystem("fe80::1%lo"), testing::IsEmpty());
}

}  // namespace
