#include "srctl/SrctlTest.h"
#include "srctl/StandInAgent.h"
#include "support/LoopbackListener.h"
#include "support/PseudoTerminal.h"

#include <poll.h>

#include <algorithm>

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::ChildProcess;

namespace {

constexpr char kURL[] = "https://one.example/discovery";

// Somebody has connected, and nobody answers him.
bool IsCalled(const TestSupport::LoopbackListener& server) {
  pollfd state{server.socket.Get(), POLLIN, 0};
  return ::poll(&state, 1, 0) == 1;
}

struct Answer {
  int status = -1;
  std::string output;
};

// The agent's answers are the test's.
class SrctlLocation : public SrctlTest {
 protected:
  Answer Ask(const std::vector<std::string>& arguments) {
    ChildProcess srctl = StartSrctl(arguments);
    EXPECT_TRUE(standIn_.ServeUntil([&] { return !srctl.IsRunning(); }));
    return {srctl.Wait(), srctl.Output()};
  }

  StandInAgent standIn_{agent_.BusAddress()};
};

TEST_F(SrctlLocation, SaysEachLocationInWords) {
  const std::vector<std::string> sentences{
      "deciding, it is not decided yet where this machine stands.\n",
      "LAN, this machine is in the store's network.\n",
      "outside, this machine is outside the store's network.\n",
      "none, there is no network, or nothing that belongs to the store answers in it.\n",
      "VPN, this machine is in the store's network through a VPN.\n",
      "hotspot, this machine is behind a hotspot's sign-in page.\n",
      "partly internal, this machine reaches only a part of the store's network.\n",
      "undefined, the agent's answer is a number without a meaning: 7.\n"};
  for (std::size_t location = 0; location < sentences.size(); ++location) {
    standIn_.location = location;
    const Answer answer = Ask({"location", kURL});
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.output, sentences[location]);
  }
  EXPECT_THAT(standIn_.Questions(), testing::Each(kURL));
}

TEST_F(SrctlLocation, GivesTheNumberAndItsNameInJson) {
  standIn_.location = 6;
  EXPECT_EQ(json::parse(Ask({"location", kURL, "--json"}).output),
            (json{{"url", kURL}, {"location", 6}, {"name", "NETWORK_LOCATION_PARTLY_INTERNAL"}}));
  standIn_.location = 4294967295;
  EXPECT_EQ(json::parse(Ask({"location", "--json", kURL}).output),
            (json{{"url", kURL}, {"location", 4294967295}, {"name", "NETWORK_LOCATION_UNDEFINED"}}));
}

TEST_F(SrctlLocation, IsToldByDoctorAlsoWhereTheAgentIsOfBeforeAnUpdate) {
  standIn_.location = 1;
  standIn_.reason = "its beacon answered";
  standIn_.ServeStores(
      {{{"StoreID", "s1"}, {"StoreName", "One"}, {"StoreURL", "https://127.0.0.1:1/discovery"}}});
  const Answer answer = Ask({"doctor"});
  EXPECT_THAT(answer.output, HasSubstr("location: LAN, this machine is in the store's network. "));
  EXPECT_THAT(answer.output, HasSubstr("its beacon answered"));
  EXPECT_THAT(answer.output, HasSubstr("ok: agent: "));
}

TEST_F(SrctlLocation, DoctorLooksAtTheServersOfAllStoresWhileTheAgentIsDeciding) {
  std::vector<TestSupport::LoopbackListener> servers(3);
  std::vector<PropertyList::Dictionary> stores;
  for (const TestSupport::LoopbackListener& server : servers) {
    const std::string url = "https://127.0.0.1:" + std::to_string(server.port) + "/discovery";
    stores.push_back({{"StoreID", url}, {"StoreName", "One"}, {"StoreURL", url}});
  }
  standIn_.ServeStores(stores);
  TestSupport::PseudoTerminal terminal;
  ChildProcess srctl({"sh", "-c", "exec \"$0\" doctor 2>\"$1\"", SR_STAGE_DIR "/bin/srctl", terminal.Path()},
                     agent_.Environment());
  EXPECT_TRUE(standIn_.ServeUntil([&] { return std::ranges::all_of(servers, IsCalled); }));
  EXPECT_EQ(standIn_.Explanations(), 0U) << "that is asked once it is decided, or has taken too long";
  static_cast<void>(terminal.ReadUntil("Looking at the stores: 0 of 3 done."));
  EXPECT_TRUE(srctl.IsRunning());
  servers.clear();
  standIn_.location = 1;
  for (const std::string& url : standIn_.Questions()) standIn_.AnnounceLocation(url);
  ASSERT_TRUE(standIn_.ServeUntil([&] { return !srctl.IsRunning(); }));
  EXPECT_EQ(standIn_.Explanations(), 3U);
  EXPECT_THAT(srctl.Output(), HasSubstr("location: LAN, "));
}

TEST_F(SrctlLocation, DoctorTellsOfTheServersAlsoWhereTheAgentIsLostOverIt) {
  const std::string url = "https://127.0.0.1:1/discovery";
  standIn_.ServeStores({{{"StoreID", "s1"}, {"StoreName", "One"}, {"StoreURL", url}}});
  ChildProcess srctl = StartSrctl({"doctor"});
  ASSERT_TRUE(standIn_.ServeUntil([&] { return !standIn_.Questions().empty(); }));
  agent_.EndBus();
  EXPECT_EQ(srctl.Wait(), 1);
  EXPECT_THAT(srctl.Output(), HasSubstr("server: " + url + ": it cannot be contacted: "));
  EXPECT_THAT(srctl.Output(), HasSubstr("problem: agent: It cannot be reached: "));
}

TEST_F(SrctlLocation, WaitsUntilTheAgentHasDecided) {
  ChildProcess srctl = StartSrctl({"location", "--wait", kURL});
  ASSERT_TRUE(standIn_.ServeUntil([&] { return standIn_.Questions().size() == 1; }));
  EXPECT_TRUE(srctl.IsRunning());
  // Another store's decision leads to the question again, and that to nothing.
  standIn_.AnnounceLocation("https://other.example");
  ASSERT_TRUE(standIn_.ServeUntil([&] { return standIn_.Questions().size() == 2; }));
  EXPECT_TRUE(srctl.IsRunning());
  standIn_.location = 2;
  standIn_.AnnounceLocation(kURL);
  ASSERT_TRUE(standIn_.ServeUntil([&] { return !srctl.IsRunning(); }));
  EXPECT_EQ(srctl.Wait(), 0);
  EXPECT_EQ(srctl.Output(), "outside, this machine is outside the store's network.\n");
  EXPECT_THAT(standIn_.Questions(), ElementsAre(kURL, kURL, kURL));
}

TEST_F(SrctlLocation, WaitsForNothingWhenItIsDecided) {
  standIn_.location = 3;
  EXPECT_EQ(Ask({"location", kURL, "--wait=3600"}).status, 0);
  EXPECT_THAT(standIn_.Questions(), ElementsAre(kURL));
}

TEST_F(SrctlLocation, WhatIsUndecidedAfterTheWaitIsRefused) {
  const Answer answer = Ask({"location", kURL, "--wait=1"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_THAT(answer.output, HasSubstr("After 1 second the location relative to \"" + std::string(kURL) +
                                       "\" is still not decided. Wait longer (--wait=SECONDS)"));
}

TEST_F(SrctlLocation, ReachabilityIsSaidInWords) {
  standIn_.flags = (1U << 17) | (1U << 1);
  const Answer answer = Ask({"reachability"});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.output,
            "Flags                     131074\n"
            "Network reachable         yes\n"
            "Through a tunnel          no\n"
            "Local address             no\n"
            "Direct, without a router  yes\n");
}

TEST_F(SrctlLocation, ReachabilityInJsonHasTheNumberAndItsBits) {
  standIn_.flags = (1U << 16) | (1U << 1) | 1U;
  EXPECT_EQ(json::parse(Ask({"reachability", "--json"}).output), (json{{"flags", 65539},
                                                                       {"reachable", true},
                                                                       {"transient", true},
                                                                       {"localAddress", true},
                                                                       {"direct", false}}));
}

class SrctlWithRealAgent : public SrctlTest {
 protected:
  SrctlWithRealAgent() {
    agent_.Start();
    GiveStores({Store("s1", "One")});
  }
};

TEST_F(SrctlWithRealAgent, ShowsTheCurrentGatewayOfTheStoreBehindTheUrl) {
  const SrctlRun run = Srctl({"gateway", Store("s1", "").url});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "Gateway         Head Office\nURL             " +
                            Store("s1", "").gateways[1].location +
                            "\nAuthentication  domain\nEdition         enterprise\n");
  EXPECT_THAT(run.errors, IsEmpty());
}

TEST_F(SrctlWithRealAgent, GivesTheGatewaysNumbersAndNamesInJson) {
  EXPECT_EQ(json::parse(Srctl({"gateway", "--json", Store("s1", "").url}).output),
            (json{{"name", "Head Office"},
                  {"url", Store("s1", "").gateways[1].location},
                  {"authentication", 2},
                  {"authenticationName", "domain"},
                  {"edition", 2},
                  {"editionName", "enterprise"}}));
}

TEST_F(SrctlWithRealAgent, AMissingGatewayIsSaid) {
  for (const char* url : {"https://nobody.example", ""}) {
    const SrctlRun run = Srctl({"gateway", url});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.errors, HasSubstr("There is no gateway for \"" + std::string(url) + "\""));
  }
}

TEST_F(SrctlWithRealAgent, AnAddressOfNoStoreIsSaidBesideItsLocationAndNotFound) {
  const SrctlRun unknown = Srctl({"location", "https://nobody.example"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_THAT(unknown.output, testing::Not(IsEmpty()));
  EXPECT_EQ(unknown.errors,
            "srctl: No store has the address \"https://nobody.example\". Stores: srctl list\n");
  TestSupport::StoreText outside = Store("s2", "Two");
  outside.internalBeacons = {"https://localhost:1"};
  GiveStores({outside});
  const SrctlRun known = Srctl({"location", "--wait", outside.url + "//"});
  EXPECT_EQ(known.status, 0);
  EXPECT_THAT(known.output, HasSubstr("outside"));
  EXPECT_THAT(known.errors, IsEmpty());
}

TEST_F(SrctlWithRealAgent, ADecisionOfTheRealAgentCanBeWaitedFor) {
  const SrctlRun run = Srctl({"location", "--wait", Store("s1", "").url});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.output, "LAN, this machine is in the store's network.\n");
}

TEST_F(SrctlWithRealAgent, ReachabilityAndALocationAreAnswered) {
  EXPECT_EQ(Srctl({"reachability"}).status, 0);
  EXPECT_EQ(json::parse(Srctl({"location", "https://nobody.example", "--json"}).output)["url"],
            "https://nobody.example");
}

}  // namespace
