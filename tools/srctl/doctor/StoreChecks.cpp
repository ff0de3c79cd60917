#include "doctor/StoreChecks.h"

#include "SRLib/Gen_URL.h"
#include "SRLib/SRXMLProvider.h"
#include "doctor/DocumentCheck.h"
#include "doctor/ServerCheck.h"
#include "libs/Address/SendingForm.h"
#include "libs/Address/SplitURL.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/GetRequest.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "print/NetworkWords.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace Srctl::StoreChecks {
namespace {

using Result = Finding::Result;
using Kind = ServerCheck::Answer::Kind;

constexpr char kSignIn[] = "Open a web browser, sign in to the hotspot, then run srctl doctor again.";
constexpr char kAskForDiscovery[] = "Ask your administrator whether discovery is set up at this address.";

// Null for an address to which the agent would send nothing.
std::unique_ptr<Transfer::GetRequest> RequestTo(const std::string& url) {
  Gen_URL address(url);
  const Address::SendingForm form = FormForSending(address.GetSplitURL(), address.GetURL());
  return form.reading == Address::Reading::Same ? Transfer::GetRequest::Make(form.text) : nullptr;
}

// The same text for addresses of the same scheme, host and port.
std::string ServerOf(const std::string& url) {
  const std::string scheme = url.substr(0, url.find("://"));
  return util::AsciiLowerCased(scheme + " " + Address::SplitURL(url).WithoutPage());
}

// One run over a store.
class StoreCheck {
 public:
  StoreCheck(const Situation& situation, const FindingReport& report)
      : situation_(situation), store_(situation.store), report_(report) {}

  void Run() {
    const Kind server = CheckServer();
    CheckGateways(server);
    CheckDocument(server);
    if (situation_.location) CheckLocation(*situation_.location);
  }

 private:
  [[nodiscard]] bool IsReachedThroughGateway() const {
    return IsAt(Wayfinder::kOutside) && !store_.gateways.empty();
  }

  // Nobody tells where this machine stands relative to a store that is not in the list.
  [[nodiscard]] bool MayBeReachedThroughGateway() const {
    return IsReachedThroughGateway() || (!situation_.location && !store_.gateways.empty());
  }

  [[nodiscard]] bool IsAt(std::uint64_t location) const {
    return situation_.location && situation_.location->value == location;
  }

  // Where nobody tells that, a server that can be contacted does.
  [[nodiscard]] bool IsInside(Kind server) const {
    if (!situation_.location || IsAt(Wayfinder::kDeciding)) return server != Kind::NotContacted;
    return IsAt(Wayfinder::kLAN) || IsAt(Wayfinder::kVPN) || IsAt(Wayfinder::kPartlyInternal);
  }

  // The default one, which is used, comes first; of several at one server only one.
  [[nodiscard]] std::vector<std::string> GatewayURLs() const {
    std::vector<GatewayInfo> gateways = store_.gateways;
    std::stable_partition(gateways.begin(), gateways.end(),
                          [](const GatewayInfo& gateway) { return gateway.isDefault; });
    std::vector<std::string> urls;
    std::set<std::string> servers;
    for (const GatewayInfo& gateway : gateways) {
      if (!gateway.url.empty() && servers.insert(ServerOf(gateway.url)).second) urls.push_back(gateway.url);
    }
    return urls;
  }

  const ServerCheck::Answer& AnswerOf(const std::string& url) {
    const auto [answer, isNew] = answers_.try_emplace(ServerOf(url));
    if (isNew) answer->second = ServerCheck::Ask(url);
    return answer->second;
  }

  void Report(Result result, const std::string& check, const std::string& text,
              const std::string& next = {}) {
    report_({.result = result,
             .check = check,
             .text = text,
             .next = next,
             .storeID = store_.id,
             .storeName = store_.name});
  }

  void ReportServer(Result result, const std::string& check, const std::string& url,
                    const ServerCheck::Answer& answer) {
    const bool signIn = result == Result::Problem && IsAt(Wayfinder::kHotspot);
    Report(result, check, url + ": " + answer.text + ".", signIn ? kSignIn : answer.next);
  }

  static Result ResultOf(Kind kind) {
    switch (kind) {
      case Kind::Trusted:
        return Result::Ok;
      case Kind::NotProtected:
        return Result::Note;
      case Kind::WrongAddress:
      case Kind::NotContacted:
      case Kind::NotTrusted:
        break;
    }
    return Result::Problem;
  }

  Kind CheckServer() {
    const ServerCheck::Answer& answer = AnswerOf(store_.url);
    if (answer.kind == Kind::NotContacted && MayBeReachedThroughGateway()) {
      Report(Result::Note, "server",
             store_.url + ": " + answer.text + ". From outside the store is reached through its gateway.");
    } else {
      ReportServer(ResultOf(answer.kind), "server", store_.url, answer);
    }
    return answer.kind;
  }

  void CheckGateways(Kind server) {
    for (const std::string& url : GatewayURLs()) {
      const ServerCheck::Answer& answer = AnswerOf(url);
      if (answer.kind == Kind::NotContacted && IsInside(server)) {
        Report(Result::Note, "gateway",
               url + ": " + answer.text + ". From inside the store is reached without it.");
      } else {
        ReportServer(ResultOf(answer.kind), "gateway", url, answer);
      }
    }
  }

  void CheckDocument(Kind server) {
    if (server != Kind::Trusted && server != Kind::NotProtected) {
      Report(Result::Note, "discovery document",
             "It was not asked for, because the server cannot be used yet.");
      return;
    }
    const std::unique_ptr<Transfer::GetRequest> request = RequestTo(store_.url);
    const long status = request ? request->Perform() : 0;
    if (status == Transfer::GetRequest::kOK && util::IsUTF8(request->Body())) {
      CheckContent(util::widen(request->Body()));
    } else {
      ReportStatus(status);
    }
  }

  void CheckContent(const std::wstring& document) {
    if (!ServiceRecords::SRXMLProvider::IsDiscovery(document)) {
      ReportDocument("What the server sends is no discovery document.", kAskForDiscovery);
      return;
    }
    const DocumentCheck::Result check = DocumentCheck::Check(util::narrow(document));
    if (!check.problem.empty()) {
      ReportDocument("It is not valid: " + check.problem + ".",
                     "Ask the administrator of the server to correct the document.");
      return;
    }
    const std::string stores =
        check.stores.size() == 1 ? "one store" : std::to_string(check.stores.size()) + " stores";
    const bool isDescribed = store_.id.empty() || check.stores.contains(util::widen(store_.id));
    if (!isDescribed) {
      ReportDocument("It is valid, and describes " + stores + ", but not this one.",
                     "Ask your administrator for the service record of the store that is at this address.");
      return;
    }
    Report(Result::Ok, "discovery document", "It is valid, and describes " + stores + ".");
  }

  void ReportStatus(long status) {
    constexpr long kUnauthorized = 401;
    if (status == kUnauthorized) {
      Report(Result::Note, "discovery document",
             "The server asks for a log-on, so it was not looked into. The agent logs on when it asks.");
    } else if (status == 0) {
      ReportDocument("No complete answer came.", "Try again later; if it stays so, ask your administrator.");
    } else if (status == Transfer::GetRequest::kOK) {
      ReportDocument("It is not UTF-8 text.", "Ask the administrator of the server to correct the document.");
    } else {
      ReportDocument("The server answers with the status " + std::to_string(status) + ".", kAskForDiscovery);
    }
  }

  // What is wrong with a direct answer says nothing about the way through the gateway.
  void ReportDocument(const std::string& text, const std::string& next) {
    if (IsReachedThroughGateway()) {
      Report(Result::Note, "discovery document", text + " From outside it is fetched through the gateway.");
    } else {
      const bool signIn = IsAt(Wayfinder::kHotspot);
      Report(Result::Problem, "discovery document", text, signIn ? kSignIn : next);
    }
  }

  void CheckLocation(const LocationInfo& location) {
    const NetworkWords::LocationWords words = NetworkWords::OfLocation(location.value);
    std::string text = std::string(words.word) + ", " + words.sentence + ". ";
    text +=
        location.reason.empty() ? "The beacons did not tell why in time." : "Why: " + location.reason + ".";
    switch (location.value) {
      case Wayfinder::kLAN:
      case Wayfinder::kVPN:
      case Wayfinder::kPartlyInternal:
        return Report(Result::Ok, "location", text);
      case Wayfinder::kOutside:
        return ReportOutside(text);
      case Wayfinder::kDeciding:
        return Report(Result::Note, "location", text, "Ask again: srctl location URL --wait");
      case Wayfinder::kHotspot:
        return Report(Result::Problem, "location", text, kSignIn);
      case Wayfinder::kNone:
        return Report(
            Result::Problem, "location", text,
            "Connect to a network; if you are connected, ask your administrator about the beacons.");
      default:
        return Report(Result::Note, "location",
                      text + " It is the number " + std::to_string(location.value) + ".");
    }
  }

  void ReportOutside(const std::string& text) {
    if (!store_.gateways.empty()) return Report(Result::Ok, "location", text);
    Report(Result::Note, "location", text + " The store has no gateway for that.",
           "Connect to the store's network, for example through a VPN.");
  }

  const Situation& situation_;
  const StoreInfo& store_;
  const FindingReport& report_;
  std::map<std::string, ServerCheck::Answer> answers_;  // by server: each is asked once
};

}  // namespace

void CheckStore(const Situation& situation, const FindingReport& report) {
  StoreCheck(situation, report).Run();
}

}  // namespace Srctl::StoreChecks
