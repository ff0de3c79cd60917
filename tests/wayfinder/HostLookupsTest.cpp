#include "libs/Wayfinder/HostLookups.h"
#include "wayfinder/HangingResolver.h"
#include "wayfinder/ProcessCounts.h"

#include <gmock/gmock.h>
#include <poll.h>

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
  const auto lookup = lookups.Start("10.0.0.");
  WaitForEnd(lookups);
  EXPECT_TRUE(lookup->HasEnded());
  EXPECT_THAT(lookup->Addresses(), testing::ElementsAre("10.0.0.1", "10.0.0.2"));
}

TEST(HostLookups, AResolverThatThrowsFindsNothing) {
  HostLookups lookups(
      [](const std::string& /*host*/) -> std::vector<std::string> { throw std::runtime_error("no"); });
  const auto lookup = lookups.Start("host");
  WaitForEnd(lookups);
  EXPECT_THAT(lookup->Addresses(), testing::IsEmpty());
}

TEST(HostLookups, LookupsThatHangNeitherPileUpNorHoldUpTheEnd) {
  const long before = RunningThreads();
  HangingResolver resolver;
  {
    HostLookups lookups(resolver.Resolver());
    int started = 0;
    for (int i = 0; i < 10 * HostLookups::kMostThreads; ++i) started += lookups.Start("host") != nullptr;
    EXPECT_EQ(started, HostLookups::kMostThreads);
    EXPECT_LE(RunningThreads(), before + HostLookups::kMostThreads);
  }
  resolver.Release();
  EXPECT_TRUE(ComesTrue([before] { return RunningThreads() <= before; }));
}

TEST(HostLookups, TheSystemKnowsThisMachinesName) {
  EXPECT_THAT(Wayfinding::ResolveWithSystem("localhost"), testing::Not(testing::IsEmpty()));
  EXPECT_THAT(Wayfinding::ResolveWithSystem("not a host name"), testing::IsEmpty());
}

TEST(HostLookups, AnAddressOfOneLinkAloneIsLeftOut) {
  EXPECT_THAT(Wayfinding::ResolveWithSystem("fe80::1%lo"), testing::IsEmpty());
}

}  // namespace
