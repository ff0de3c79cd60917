#include "libs/Bus/ServiceNames.h"
#include "srctl/SrctlTest.h"
#include "srctl/StandInAgent.h"

#include <csignal>
#include <sstream>

using nlohmann::json;
using PropertyList::Dictionary;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using TestSupport::ChildProcess;

namespace {

constexpr char kWatching[] = "Watching the agent.\n";
constexpr char kUpdated[] = "The list of stores was updated.\n";
constexpr char kStoreURL[] = "https://one.example/discovery";

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

class SrctlWatch : public SrctlTest {
 protected:
  // Returns when it misses nothing any more.
  ChildProcess Watch() {
    ChildProcess srctl = StartSrctl({"watch"});
    srctl.WaitForOutput(kWatching);
    return srctl;
  }

  // What srctl ends with when a signal asks it to.
  static int End(ChildProcess& srctl, int signal = SIGTERM) {
    srctl.Signal(signal);
    return srctl.Wait();
  }

  // Serves the agent's place until srctl has printed a line with the text.
  static bool Prints(const ChildProcess& srctl, StandInAgent& standIn, const std::string& text) {
    return standIn.ServeUntil([&] {
      const std::string output = srctl.Output();
      const std::size_t at = output.find(text);
      return at != std::string::npos && output.find('\n', at) != std::string::npos;
    });
  }

  // Returns when the bus has passed it on.
  void AnnounceChangesAsAStranger(const std::vector<Dictionary>& changes) const {
    namespace Names = Bus::ServiceNames;
    constexpr Bus::Service kBus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Peer"};
    auto stranger = Bus::Connection::To(agent_.BusAddress());
    ASSERT_TRUE(stranger);
    ASSERT_TRUE(stranger->Emit(Names::kOpeningsPath, Names::kOpeningsInterface, Names::kStoresChangedSignal,
                               changes));
    ASSERT_TRUE(stranger->Call<>(kBus, {}, "Ping"));
  }

  // In a shell, so that its output can lead elsewhere.
  [[nodiscard]] ChildProcess InShell(const std::string& script) const {
    return ChildProcess({"bash", "-c", "set -o pipefail; " + script, SR_STAGE_DIR "/bin/srctl"},
                        agent_.Environment(), {.captureErrors = true});
  }
};

TEST_F(SrctlWatch, StartsTheAgent) {
  ChildProcess srctl = Watch();
  EXPECT_TRUE(agent_.Bus().HasOwner("com.morvane.ServiceRecords"));
  EXPECT_EQ(End(srctl), 0);
  EXPECT_THAT(Lines(srctl.Output()), testing::SizeIs(1)) << "its start is no event";
}

TEST_F(SrctlWatch, EndsWellWhenASignalAsksItTo) {
  for (const int signal : {SIGINT, SIGTERM}) {
    ChildProcess srctl = Watch();
    EXPECT_EQ(End(srctl, signal), 0);
  }
}

TEST_F(SrctlWatch, PrintsALineWithTheTimeForEachUpdateOfTheStores) {
  ChildProcess srctl = Watch();
  GiveStores({Store("s1", "One")});
  srctl.WaitForOutput(kUpdated);
  EXPECT_EQ(End(srctl), 0);
  const std::string time = "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[+-][0-9]{2}:[0-9]{2} ";
  EXPECT_THAT(Lines(srctl.Output()), testing::Each(MatchesRegex(time + "[A-Z].*\\.")));
}

TEST_F(SrctlWatch, PassesOverWhatOthersNotify) {
  ChildProcess srctl = Watch();
  agent_.Bus().PostNotification("com.morvane.quillon.Other", "MRVServiceRecordStoresUpdated");
  agent_.Bus().PostNotification("MRVServiceRecordStoresUpdated", "MRVServiceRecord");
  srctl.WaitForOutput(kUpdated);
  EXPECT_EQ(End(srctl), 0);
  EXPECT_THAT(Lines(srctl.Output()), testing::SizeIs(2));
}

TEST_F(SrctlWatch, TellsThatTheAgentLeftAndThatItCameBack) {
  ChildProcess srctl = Watch();
  agent_.EndActivated();
  srctl.WaitForOutput("The agent has left the bus.\n");
  EXPECT_FALSE(agent_.Bus().HasOwner("com.morvane.ServiceRecords")) << "watching does not start it again";
  agent_.Bus().ServiceRecords("allStores");
  srctl.WaitForOutput("The agent is on the bus again.\n");
  GiveStores({Store("s1", "One")});
  srctl.WaitForOutput("\"One\" (s1) was added.\n");
  EXPECT_EQ(End(srctl), 0);
}

TEST_F(SrctlWatch, AsksForTheLocationThatHasChanged) {
  StandInAgent standIn(agent_.BusAddress());
  standIn.location = 4;
  ChildProcess srctl = StartSrctl({"watch"});
  ASSERT_TRUE(Prints(srctl, standIn, kWatching));
  standIn.AnnounceLocation(kStoreURL);
  ASSERT_TRUE(Prints(srctl, standIn,
                     "Location relative to \"" + std::string(kStoreURL) +
                         "\": VPN, this machine is in the store's network through a VPN.\n"));
  standIn.AnnounceLocation(kStoreURL);
  ASSERT_TRUE(standIn.ServeUntil([&] { return standIn.Questions().size() == 2; }));
  standIn.location = 0;
  standIn.AnnounceLocation(kStoreURL);
  ASSERT_TRUE(Prints(srctl, standIn, "\": deciding, it is not decided yet where this machine stands.\n"));
  EXPECT_THAT(standIn.Questions(), ElementsAre(kStoreURL, kStoreURL, kStoreURL));
  EXPECT_THAT(Lines(srctl.Output()), testing::SizeIs(3)) << "no location twice";
}

TEST_F(SrctlWatch, TellsWhatHasChangedInTheList) {
  ChildProcess srctl = Watch();
  GiveStores({Store("s1", "One")});
  agent_.Bus().ServiceRecords("setDefaultGatewayForStoreIDTo", {"s1", "Branch"});
  agent_.Bus().ServiceRecords("deleteStore", {"s1"});
  srctl.WaitForOutput("\"One\" (s1) was added.\n");
  srctl.WaitForOutput("The default gateway of the store \"One\" (s1) is now \"Branch\".\n");
  srctl.WaitForOutput("\"One\" (s1) was deleted.\n");
}

TEST_F(SrctlWatch, TellsAConfirmation) {
  StandInAgent standIn(agent_.BusAddress());
  ChildProcess srctl = StartSrctl({"watch", "--json"});
  ASSERT_TRUE(Prints(srctl, standIn, "watching"));
  standIn.AnnounceChanges(
      {Dictionary{
           {"Change", "confirmed"}, {"StoreID", "s1"}, {"StoreName", "One\x1B"}, {"StoreURL", kStoreURL}},
       Dictionary{{"Change", "default-gateway"},
                  {"StoreID", "s2"},
                  {"StoreName", "Two"},
                  {"StoreURL", kStoreURL},
                  {"GatewayName", "Branch"}}});
  ASSERT_TRUE(Prints(srctl, standIn, "store-default-gateway"));
  const std::vector<std::string> lines = Lines(srctl.Output());
  ASSERT_EQ(lines.size(), 3U);
  json confirmed = json::parse(lines[1]);
  confirmed.erase("time");
  EXPECT_EQ(confirmed,
            (json{{"event", "store-confirmed"}, {"id", "s1"}, {"name", "One\x1B"}, {"url", kStoreURL}}));
  EXPECT_EQ(json::parse(lines[2])["gateway"], "Branch");
}

TEST_F(SrctlWatch, BelievesNobodyButTheAgentThatTheListHasChanged) {
  StandInAgent standIn(agent_.BusAddress());
  ChildProcess srctl = StartSrctl({"watch", "--json"});
  ASSERT_TRUE(Prints(srctl, standIn, "watching"));
  AnnounceChangesAsAStranger({Dictionary{{"Change", "added"}, {"StoreID", "forged"}}});
  standIn.AnnounceChanges({Dictionary{{"Change", "confirmed"}, {"StoreID", "s1"}}});
  ASSERT_TRUE(Prints(srctl, standIn, "store-confirmed"));
  EXPECT_THAT(srctl.Output(), testing::Not(HasSubstr("forged")));
}

TEST_F(SrctlWatch, TellsThePresentStateWhenAskedTo) {
  GiveStores({Store("s1", "One"), Store("s2", "Two")});
  ChildProcess srctl = StartSrctl({"watch", "--initial"});
  for (const char* id : {"s1", "s2"})
    srctl.WaitForOutput("Location relative to \"" + Store(id, "").url + "\": LAN");
  EXPECT_THAT(srctl.Output(), testing::AllOf(HasSubstr("In the list: store \"One\" (s1).\n"),
                                             HasSubstr("In the list: store \"Two\" (s2).\n")));
}

TEST_F(SrctlWatch, TellsADecisionOfTheAgent) {
  ChildProcess srctl = Watch();
  GiveStores({Store("s1", "One")});
  srctl.WaitForOutput("Location relative to \"" + Store("s1", "").url +
                      "\": LAN, this machine is in the store's network.\n");
}

TEST_F(SrctlWatch, PrintsAJsonObjectPerLine) {
  ChildProcess srctl = StartSrctl({"watch", "--json"});
  srctl.WaitForOutput("watching");
  agent_.Bus().PostNotification("MRVServiceRecordStoresUpdated", "MRVServiceRecord");
  srctl.WaitForOutput("stores-updated");
  agent_.Bus().PostNotification("MRVNetworkLocationChanged", "https://nobody.example/ö\x1B");
  srctl.WaitForOutput("location-changed");
  agent_.EndActivated();
  srctl.WaitForOutput("agent-left");
  EXPECT_EQ(End(srctl), 0);

  std::vector<std::string> events;
  for (const std::string& line : Lines(srctl.Output())) {
    const json event = json::parse(line);
    EXPECT_TRUE(event["time"].is_string());
    events.push_back(event["event"]);
    if (events.back() != "location-changed") continue;
    EXPECT_EQ(event["url"], "https://nobody.example/ö\x1B");
    EXPECT_TRUE(event["location"].is_number());
    EXPECT_THAT(event["name"].get<std::string>(), testing::StartsWith("NETWORK_LOCATION_"));
  }
  EXPECT_THAT(events, ElementsAre("watching", "stores-updated", "location-changed", "agent-left"));
}

TEST_F(SrctlWatch, CarriesNoControlCharacterToTheTerminal) {
  ChildProcess srctl = Watch();
  agent_.Bus().PostNotification("MRVNetworkLocationChanged", "https://one.example/\x1B[2J\nok: all is well");
  srctl.WaitForOutput("https://one.example/\uFFFD[2J\uFFFDok: all is well");
}

TEST_F(SrctlWatch, EndsWhenTheBusIsGone) {
  ChildProcess srctl = Watch();
  agent_.EndBus();
  EXPECT_EQ(srctl.Wait(), 3);
  EXPECT_THAT(srctl.Output(), HasSubstr("srctl: The agent cannot be reached: the session bus is gone."));
}

TEST_F(SrctlWatch, EndsWhenNobodyReadsItsOutputAnyMore) {
  ChildProcess shell = InShell("\"$0\" watch | head -n 1");
  EXPECT_EQ(shell.Wait(), 1) << "without a further event";
  EXPECT_THAT(shell.Output(), HasSubstr("srctl: The output could not be written. "));
}

TEST_F(SrctlWatch, EndsWhenItsOutputCannotBeWritten) {
  EXPECT_EQ(InShell("\"$0\" watch >/dev/full").Wait(), 1);
  EXPECT_EQ(InShell("\"$0\" watch >&-").Wait(), 1);
}

}  // namespace
