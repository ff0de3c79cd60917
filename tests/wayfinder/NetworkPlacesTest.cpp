#include "libs/Wayfinder/Network/NetworkState.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "support/TrustedAuthority.h"
#include "support/WebServer.h"
#include "wayfinder/AddressServer.h"
#include "wayfinder/HangingResolver.h"
#include "wayfinder/NetworkNamespaces.h"
#include "wayfinder/RecordedService.h"
#include "wayfinder/Responses.h"

#include <gmock/gmock.h>

#include <atomic>
#include <optional>

using TestSupport::AddressServer;
using TestSupport::kGood;
using TestSupport::kStore;
using TestSupport::kToPortal;
using TestSupport::RecordedService;

namespace {

constexpr char kInside[] = "http://10.1.0.2/";
constexpr char kOutside[] = "http://10.1.0.3:8080/";

class NetworkPlaces : public TestSupport::NetworkNamespaces {
 protected:
  void Serve(std::optional<AddressServer>& server, const char* address, std::uint16_t port,
             const std::string& response) {
    InFar([&] { server.emplace(address, port, response); });
  }
  void ExpectLocation(RecordedService& service, std::uint32_t location) {
    service.SetStores({{kStore, {kInside}, {kOutside}}});
    EXPECT_TRUE(service.WaitForLocation(kStore, location)) << testing::PrintToString(service.Messages());
  }
  static Wayfinding::HostLookups::Resolver EveryHostAt(const std::vector<std::string>& addresses) {
    return [addresses](const std::string& /*host*/) { return addresses; };
  }
  std::uint32_t Flags() const { return service_.Flags(); }

  std::optional<AddressServer> inside_;
  std::optional<AddressServer> outside_;
  RecordedService service_;
};

TEST_F(NetworkPlaces, WithoutANetworkThereIsNone) {
  ExpectLocation(service_, Wayfinder::kNone);
  EXPECT_TRUE(service_.WaitForMessage("store https://store.example/Main: none, no usable network"));
  EXPECT_EQ(service_.LocationOf("https://unknown.example"), Wayfinder::kNone);
  EXPECT_EQ(Flags(), 0U);
}

TEST_F(NetworkPlaces, WithoutANetworkLoopbackBeaconsAreAskedAllTheSame) {
  const AddressServer here("127.0.0.1", 8080, kGood);
  service_.SetStores({{kStore, {"http://127.0.0.1:8080/"}, {kOutside}}});
  EXPECT_TRUE(service_.WaitForLocation(kStore, Wayfinder::kLAN));
}

TEST_F(NetworkPlaces, OnItsNetworkTheStoreIsOnTheLAN) {
  ConnectByWire();
  Serve(inside_, "10.1.0.2", 80, kGood);
  ExpectLocation(service_, Wayfinder::kLAN);
  EXPECT_EQ(service_.LocationOf("https://unknown.example"), Wayfinder::kOutside);
  EXPECT_EQ(Flags(), Wayfinder::kReachable | Wayfinder::kIsDirect) << "a network without a gateway";
}

TEST_F(NetworkPlaces, ElsewhereOnlyTheOutsideAnswers) {
  ConnectByWire();
  IP({"route", "add", "default", "via", "10.1.0.254"});
  Serve(outside_, "10.1.0.3", 8080, kGood);
  ExpectLocation(service_, Wayfinder::kOutside);
  EXPECT_EQ(Flags(), Wayfinder::kReachable) << "by way of a gateway";
}

TEST_F(NetworkPlaces, ANetworkOnWhichNobodyAnswersIsNone) {
  ConnectByWire();
  ExpectLocation(service_, Wayfinder::kNone);
  EXPECT_EQ(service_.LocationOf("https://unknown.example"), Wayfinder::kOutside);
}

TEST_F(NetworkPlaces, APortalThatRedirectsIsSeen) {
  ConnectByWire();
  Serve(outside_, "10.1.0.3", 8080, kToPortal);
  ExpectLocation(service_, Wayfinder::kHotspot);
}

// Every name leads to the portal, which shows its page for the one beacon and redirects for the other.
TEST_F(NetworkPlaces, APortalThatResolvesEveryNameToItselfIsSeen) {
  ConnectByWire();
  Serve(inside_, "10.1.0.254", 80, kGood);
  Serve(outside_, "10.1.0.254", 8080, kToPortal);
  RecordedService service([](const std::string& /*host*/) { return std::vector<std::string>{"10.1.0.254"}; });
  service.SetStores({{kStore, {"http://intranet.example/"}, {"http://gateway.example:8080/"}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kHotspot))
      << testing::PrintToString(service.Messages());
  EXPECT_TRUE(service.WaitForMessage("10.1.0.254 answers for others too"));
}

// Every name leads to the portal, which shows the same page for each.
class PortalOfOnePage : public NetworkPlaces {
 protected:
  static constexpr char kOther[] = "https://other.example/Main";

  void SetUp() override {
    NetworkPlaces::SetUp();
    if (IsSkipped()) return;
    ConnectByWire();
    Serve(inside_, "10.1.0.254", 80, kGood);
  }
  void ExpectNeverOnLAN(const RecordedService& service) {
    EXPECT_THAT(service.Changes(), testing::Not(testing::Contains(testing::Pair(kStore, Wayfinder::kLAN))));
  }
};

TEST_F(PortalOfOnePage, IsSeenByAnExternalBeaconThatItAnswersForToo) {
  RecordedService service(EveryHostAt({"10.1.0.254"}));
  service.SetStores({{kStore, {"http://intranet.example/"}, {"http://gateway.example/"}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kOutside))
      << testing::PrintToString(service.Messages());
  EXPECT_TRUE(service.WaitForMessage("10.1.0.254 answers for others too"));
  ExpectNeverOnLAN(service);
}

TEST_F(PortalOfOnePage, IsSeenByAnExternalBeaconOfAnotherStore) {
  RecordedService service(EveryHostAt({"10.1.0.254"}));
  service.SetStores({{kStore, {"http://intranet.example/"}, {}},
                     {kOther, {"http://10.1.0.3/"}, {"http://gateway.example/"}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kNone))
      << testing::PrintToString(service.Messages());
  ExpectNeverOnLAN(service);
}

TEST_F(PortalOfOnePage, IsRememberedWhenOnlyTheStoreWithoutAnAnswerIsAskedAgain) {
  RecordedService service(EveryHostAt({"10.1.0.254"}));
  service.SetStores({{kStore, {"http://intranet.example/"}, {}},
                     {kOther, {"http://10.1.0.3/"}, {"http://gateway.example/"}}});
  EXPECT_TRUE(service.WaitForMessage("stores without an answer: 1, repetition 3"))
      << testing::PrintToString(service.Messages());
  ExpectNeverOnLAN(service);
}

TEST_F(PortalOfOnePage, IsRememberedWhenAStoreComesLater) {
  RecordedService service(EveryHostAt({"10.1.0.254"}));
  const TestSupport::StoreAndBeacons other{kOther, {"http://10.1.0.3/"}, {"http://gateway.example/"}};
  service.SetStores({other});
  EXPECT_TRUE(service.WaitForLocation(kOther, Wayfinder::kOutside))
      << testing::PrintToString(service.Messages());
  service.SetStores({other, {kStore, {"http://intranet.example/"}, {}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kNone))
      << testing::PrintToString(service.Messages());
  ExpectNeverOnLAN(service);
}

TEST_F(PortalOfOnePage, IsForgottenWithTheStoreThatShowedIt) {
  const TestSupport::StoreAndBeacons store{kStore, {"http://intranet.example/"}, {}};
  const TestSupport::StoreAndBeacons shows{kOther, {"http://10.1.0.3/"}, {"http://gateway.example/"}};
  const TestSupport::StoreAndBeacons asksAgain{"https://third.example", {"http://intranet.example/"}, {}};
  for (const auto& next : {std::vector{store}, std::vector{store, asksAgain}}) {
    RecordedService service(EveryHostAt({"10.1.0.254"}));
    service.StopTime();  // so that nothing is repeated
    service.SetStores({store, shows});
    ASSERT_TRUE(service.WaitForLocation(kStore, Wayfinder::kNone))
        << testing::PrintToString(service.Messages());
    service.SetStores(next);
    EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN))
        << testing::PrintToString(service.Messages());
  }
}

TEST_F(PortalOfOnePage, IsSeenWhateverItSaysInTheExternalBeaconsName) {
  Serve(outside_, "10.1.0.254", 8080, TestSupport::kUnavailable);
  std::optional<AddressServer> noise;
  Serve(noise, "10.1.0.254", 443, "SSH-2.0-server\r\n");
  for (const char* external :
       {"http://gateway.example:8080/", "https://gateway.example/", "gateway.example"}) {
    RecordedService service(EveryHostAt({"10.1.0.254"}));
    service.SetStores({{kStore, {"http://intranet.example/"}, {external}}});
    EXPECT_TRUE(service.WaitForMessage("10.1.0.254 answers for others too"))
        << external << testing::PrintToString(service.Messages());
    ExpectNeverOnLAN(service);
  }
}

TEST_F(PortalOfOnePage, IsSeenLateWhereTheExternalBeaconsNameIsFoundLate) {
  TestSupport::HangingResolver hanging;
  RecordedService service([hang = hanging.Resolver()](const std::string& host) {
    if (host == "gateway.example") hang(host);
    return std::vector<std::string>{"10.1.0.254"};
  });
  service.SetStores({{kStore, {"http://intranet.example/"}, {}},
                     {kOther, {"http://intranet.example/"}, {"http://gateway.example/"}}});
  ASSERT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN)) << "names that hang are not waited for";
  hanging.Release();
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kNone))
      << testing::PrintToString(service.Messages());
  EXPECT_TRUE(service.WaitForLocation(kOther, Wayfinder::kOutside));
}

TEST_F(PortalOfOnePage, SeenLateGivesAnotherReasonForTheSameLocation) {
  std::optional<AddressServer> intranet;
  Serve(intranet, "10.1.0.2", 80, kGood);
  TestSupport::HangingResolver hanging;
  RecordedService service([hang = hanging.Resolver()](const std::string& host) {
    if (host == "gateway.example") hang(host);
    return std::vector<std::string>{"10.1.0.254"};
  });
  service.SetStores({{kStore, {"http://intranet.example/", "http://10.1.0.2/", "http://10.1.0.3/"}, {}},
                     {kOther, {"http://intranet.example/"}, {"http://gateway.example/"}}});
  ASSERT_TRUE(service.WaitForMessage("2 of 3 internal beacons answered"))
      << testing::PrintToString(service.Messages());
  hanging.Release();
  EXPECT_TRUE(service.WaitForMessage("1 of 3 internal beacons answered"))
      << testing::PrintToString(service.Messages());
}

TEST_F(PortalOfOnePage, IsNoneWhereACertificateOfItsAddressVerifies) {
  const TestSupport::WebServer server(TestSupport::TrustedAuthority().TlsServerBlock(
      "wrong-host", "listen 10.1.0.1:@PORT@ ssl;\nlisten 10.1.0.1:80;"));
  const std::string secure = "https://stores.example:" + std::to_string(server.Port()) + "/";
  RecordedService service([](const std::string& host) {
    return std::vector<std::string>{host == "ready.example" ? "127.0.0.1" : "10.1.0.1"};
  });
  service.SetStores({{kStore, {"https://ready.example:" + std::to_string(server.Port())}, {}}});
  ASSERT_TRUE(service.WaitForMessage("certificate for another name")) << "it does not listen yet";
  service.SetStores(
      {{kStore, {"http://intranet.example/"}, {"http://gateway.example/"}}, {kOther, {secure}, {}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN)) << testing::PrintToString(service.Messages());
  service.SetStores({{kStore, {"http://intranet.example/"}, {"http://gateway.example/"}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kOutside))
      << testing::PrintToString(service.Messages());
}

TEST_F(NetworkPlaces, AfterTheSignInTheStoreIsFoundWithoutAChangeOfTheNetwork) {
  ConnectByWire();
  Serve(inside_, "10.1.0.254", 80, kGood);
  Serve(outside_, "10.1.0.254", 8080, kToPortal);
  std::optional<AddressServer> intranet;
  Serve(intranet, "10.1.0.2", 80, kGood);
  std::atomic<bool> isSignedIn = false;
  RecordedService service([&isSignedIn](const std::string& /*host*/) {
    return std::vector<std::string>{isSignedIn ? "10.1.0.2" : "10.1.0.254"};
  });
  service.SetStores({{kStore, {"http://intranet.example/"}, {"http://gateway.example:8080/"}}});
  ASSERT_TRUE(service.WaitForLocation(kStore, Wayfinder::kHotspot));
  isSignedIn = true;
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN)) << testing::PrintToString(service.Messages());
}

TEST_F(NetworkPlaces, BeaconsAreAskedOverIPv6Too) {
  ConnectByWire();
  for (const char* address : {"fd00:1::1/64", "fd00:1::9/64"})
    IP({"address", "add", address, "dev", "near0", "nodad"});
  FarIP({"address", "add", "fd00:1::2/64", "dev", "far0", "nodad"});
  Serve(inside_, "fd00:1::2", 80, kGood);
  const AddressServer here("::1", 8080, kGood);
  RecordedService service(EveryHostAt({"fd00:1::3", "fd00:1::2"}));
  service.SetStores(
      {{kStore, {"http://[fd00:1::2]/", "http://[::1]:8080/", "http://intranet.example/"}, {}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN)) << testing::PrintToString(service.Messages());
}

TEST_F(NetworkPlaces, AnIPv6AddressCountsWhenItIsKnownToBeNobodyElses) {
  ConnectByWire();
  ExpectLocation(service_, Wayfinder::kNone);
  IP({"address", "add", "fd00:1::1/64", "dev", "near0"});
  EXPECT_THAT(Wayfinding::ReadNetworkState()->addresses,
              testing::Not(testing::Contains("near0 fd00:1::1/64")));
  EXPECT_TRUE(service_.WaitForMessage("network changed: near0 10.1.0.1/24, near0 fd00:1::1/64"));
}

TEST_F(NetworkPlaces, ANameIsAskedAtAllItsAddresses) {
  ConnectByWire();
  Serve(inside_, "10.1.0.2", 80, kGood);
  RecordedService service(EveryHostAt({"10.1.0.3", "10.1.0.2"}));
  service.SetStores({{kStore, {"http://intranet.example/"}, {}}});
  EXPECT_TRUE(service.WaitForLocation(kStore, Wayfinder::kLAN));
}

TEST_F(NetworkPlaces, AnAddressThatIsDeadTakesOnlyItsShareOfTheTime) {
  ConnectByWire();
  Serve(inside_, "10.1.0.2", 80, kGood);
  RecordedService service(EveryHostAt({"10.1.0.99", "10.1.0.2"}));
  service.SetStores({{kStore, {"http://intranet.example/"}, {}}});
  EXPECT_TRUE(service.WaitForMessage("LAN, 1 of 1")) << testing::PrintToString(service.Messages());
  EXPECT_THAT(service.Messages(), testing::Not(testing::Contains(testing::HasSubstr("repetition"))));
}

TEST_F(NetworkPlaces, ADefaultRouteToThisMachineIsALocalAddress) {
  IP({"route", "add", "local", "default", "dev", "lo"});
  EXPECT_NE(Flags() & Wayfinder::kIsLocalAddress, 0U);
}

TEST_F(NetworkPlaces, WhetherItIsUsableIsKnownWithoutReadingTheRoutes) {
  ConnectByWire();
  const auto network = Wayfinding::ReadNetworkWithoutRoutes();
  ASSERT_TRUE(network);
  EXPECT_TRUE(network->IsUsable());
  EXPECT_THAT(network->routes, testing::IsEmpty());
  EXPECT_THAT(Wayfinding::ReadNetworkState()->routes, testing::Not(testing::IsEmpty()));
}

TEST_F(NetworkPlaces, ALinkThatIsDownIsNoNetwork) {
  ConnectByWire();
  IP({"route", "add", "default", "via", "10.1.0.254"});
  EXPECT_TRUE(Wayfinding::ReadNetworkState()->IsUsable());
  FarIP({"link", "set", "far0", "down"});
  EXPECT_FALSE(Wayfinding::ReadNetworkState()->IsUsable());
  EXPECT_EQ(Flags(), 0U);
}

}  // namespace
