#include "doctor/StoreChecks.h"

#include "SRLib/Gen_URL.h"
#include "SRLib/SRXMLProvider.h"
#include "doctor/DocumentCheck.h"
#include "doctor/ServerAnswers.h"
#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/GetRequest.h"
#include "libs/Wayfinder/Wayfinder.h"
#include "print/NetworkWords.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

namespace Srctl::StoreChecks {
namespace {

using Wording::Message;
using Wording::Worded;
using Result = Finding::Result;
using Kind = ServerCheck::Answer::Kind;

Message SignIn() {
  return Worded("Open a web browser, sign in to the hotspot, then run srctl doctor again.");
}

Message AskForDiscovery() {
  return Worded("Ask your administrator whether discovery is set up at this address.");
}

Message CorrectDocument() {
  return Worded("Ask the administrator of the server to correct the document.");
}

constexpr char kCorrectAddress[] =
    "Correct the address that you gave: https:// and the name of the server, without a user name.";

// Null for an address to which the agent would send nothing.
std::unique_ptr<Transfer::GetRequest> RequestTo(const std::string& url) {
  Gen_URL address(url);
  const Address::SendingForm form = FormForSending(address.GetSplitURL(), address.GetURL());
  return form.reading == Address::Reading::Same ? Transfer::GetRequest::Make(form.text) : nullptr;
}

// The default one, which is used, comes first; of several at one server only one.
std::vector<std::string> GatewayURLs(const StoreInfo& store) {
  std::vector<GatewayInfo> gateways = store.gateways;
  std::stable_partition(gateways.begin(), gateways.end(),
                        [](const GatewayInfo& gateway) { return gateway.isDefault; });
  std::vector<std::string> urls;
  std::set<std::string> servers;
  for (const GatewayInfo& gateway : gateways) {
    if (!gateway.url.empty() && servers.insert(ServerAnswers::ServerOf(gateway.url)).second)
      urls.push_back(gateway.url);
  }
  return urls;
}

std::vector<std::string> AllURLs(const StoreInfo& store) {
  std::vector<std::string> urls = GatewayURLs(store);
  urls.insert(urls.begin(), store.url);
  return urls;
}

// One run over a store.
class StoreCheck {
 public:
  StoreCheck(const Situation& situation, const FindingReport& report)
      : situation_(situation), store_(situation.store), report_(report), answers_(AllURLs(store_)) {}

  void Run() {
    const Kind server = CheckServer();
    CheckGateways(server);
    CheckDocument(server);
    if (Location() != nullptr) CheckLocation(*Location());
  }

 private:
  // Null where nobody tells. Waits for it, and is asked after the servers have answered.
  [[nodiscard]] const LocationInfo* Location() const {
    if (!situation_.location.valid()) return nullptr;
    const std::optional<LocationInfo>& location = situation_.location.get();
    return location ? &*location : nullptr;
  }

  [[nodiscard]] bool IsReachedThroughGateway() const {
    return IsAt(Wayfinder::kOutside) && !store_.gateways.empty();
  }

  // Nobody tells where this machine stands relative to a store that is not in the list.
  [[nodiscard]] bool MayBeReachedThroughGateway() const {
    return IsReachedThroughGateway() || (Location() == nullptr && !store_.gateways.empty());
  }

  [[nodiscard]] bool IsAt(std::uint64_t location) const {
    return Location() != nullptr && Location()->value == location;
  }

  // Where nobody tells that, a server that can be contacted does.
  [[nodiscard]] bool IsInside(Kind server) const {
    if (Location() == nullptr || IsAt(Wayfinder::kDeciding)) return server != Kind::NotContacted;
    return IsAt(Wayfinder::kLAN) || IsAt(Wayfinder::kVPN) || IsAt(Wayfinder::kPartlyInternal);
  }

  void Report(Result result, const std::string& check, const Message& text, const Message& next = {}) {
    report_({.result = result,
             .check = check,
             .text = text,
             .next = next,
             .storeID = store_.id,
             .storeName = store_.name});
  }

  // An address that the user has typed is in no service record.
  [[nodiscard]] Message NextStep(const ServerCheck::Answer& answer) const {
    const bool isTyped = store_.id.empty();
    return answer.kind == Kind::WrongAddress && isTyped ? kCorrectAddress : answer.next;
  }

  void ReportServer(Result result, const std::string& check, const std::string& url,
                    const ServerCheck::Answer& answer) {
    const bool signIn = result == Result::Problem && IsAt(Wayfinder::kHotspot);
    Report(result, check, Worded("{address}: {answer}.", {{"address", url}, {"answer", answer.text}}),
           signIn ? SignIn() : NextStep(answer));
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
    const ServerCheck::Answer& answer = answers_.Of(store_.url);
    if (answer.kind == Kind::NotContacted && MayBeReachedThroughGateway()) {
      Report(Result::Note, "server",
             Worded("{address}: {answer}. From outside the store is reached through its gateway.",
                    {{"address", store_.url}, {"answer", answer.text}}));
    } else {
      ReportServer(ResultOf(answer.kind), "server", store_.url, answer);
    }
    return answer.kind;
  }

  void CheckGateways(Kind server) {
    for (const std::string& url : GatewayURLs(store_)) {
      const ServerCheck::Answer& answer = answers_.Of(url);
      if (answer.kind == Kind::NotContacted && IsInside(server)) {
        Report(Result::Note, "gateway",
               Worded("{address}: {answer}. From inside the store is reached without it.",
                      {{"address", url}, {"answer", answer.text}}));
      } else {
        ReportServer(ResultOf(answer.kind), "gateway", url, answer);
      }
    }
  }

  void CheckDocument(Kind server) {
    if (server != Kind::Trusted && server != Kind::NotProtected) {
      Report(Result::Note, "discovery document",
             Worded("It was not asked for, because the server cannot be used yet."));
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
      ReportDocument(Worded("What the server sends is no discovery document."), AskForDiscovery());
      return;
    }
    const DocumentCheck::Result check = DocumentCheck::Check(util::narrow(document));
    if (!check.next.IsEmpty()) {
      Report(Result::Problem, "discovery document",
             Worded("It cannot be checked: {problem}.", {{"problem", check.problem}}), check.next);
      return;
    }
    if (!check.problem.IsEmpty()) {
      ReportDocument(Worded("It is not valid: {problem}.", {{"problem", check.problem}}), CorrectDocument());
      return;
    }
    if (check.HasErrors()) {
      ReportDocument(Worded("It is not valid: {problem}.", {{"problem", DocumentCheck::Sentences(check)}}),
                     CorrectDocument());
      return;
    }
    const std::size_t count = check.stores.size();
    const bool isDescribed = store_.id.empty() || check.stores.contains(util::widen(store_.id));
    if (!isDescribed) return ReportOthers(count);
    if (!check.namesSchema) {
      Report(Result::Note, "discovery document",
             Worded("It can be read, but names no schema to validate it against."));
      return;
    }
    if (!check.problems.empty()) {
      Report(Result::Note, "discovery document",
             Worded("It can be read, but was not fully validated: {problem}.",
                    {{"problem", DocumentCheck::Sentences(check)}}));
      return;
    }
    Report(Result::Ok, "discovery document",
           count == 1
               ? Worded("It is valid, and describes one store.")
               : Worded("It is valid, and describes {count} stores.", {{"count", std::to_string(count)}}));
  }

  void ReportOthers(std::size_t count) {
    ReportDocument(
        count == 1 ? Worded("It is valid, and describes one store, but not this one.")
                   : Worded("It is valid, and describes {count} stores, but not this one.",
                            {{"count", std::to_string(count)}}),
        Worded("Ask your administrator for the service record of the store that is at this address."));
  }

  void ReportStatus(long status) {
    constexpr long kUnauthorized = 401;
    if (status == kUnauthorized) {
      Report(
          Result::Note, "discovery document",
          Worded("The server asks for a log-on, so it was not looked into. The agent logs on when it asks."));
    } else if (status == 0) {
      ReportDocument(Worded("No complete answer came."),
                     Worded("Try again later; if it stays so, ask your administrator."));
    } else if (status == Transfer::GetRequest::kOK) {
      ReportDocument(Worded("It is not UTF-8 text."), CorrectDocument());
    } else {
      ReportDocument(
          Worded("The server answers with the status {status}.", {{"status", std::to_string(status)}}),
          AskForDiscovery());
    }
  }

  // What is wrong with a direct answer says nothing about the way through the gateway.
  void ReportDocument(const Message& text, const Message& next) {
    if (IsReachedThroughGateway()) {
      Report(Result::Note, "discovery document",
             Worded("{finding} From outside it is fetched through the gateway.", {{"finding", text}}));
    } else {
      const bool signIn = IsAt(Wayfinder::kHotspot);
      Report(Result::Problem, "discovery document", text, signIn ? SignIn() : next);
    }
  }

  static Message LocationWords(const LocationInfo& location) {
    const NetworkWords::LocationWords words = NetworkWords::OfLocation(location.value);
    if (location.reason.IsEmpty()) {
      return Worded("{word}, {sentence}. The beacons did not tell why in time.",
                    {{"word", words.word}, {"sentence", words.sentence}});
    }
    return Worded("{word}, {sentence}. Why: {reason}.",
                  {{"word", words.word}, {"sentence", words.sentence}, {"reason", location.reason}});
  }

  void CheckLocation(const LocationInfo& location) {
    const Message text = LocationWords(location);
    switch (location.value) {
      case Wayfinder::kLAN:
      case Wayfinder::kVPN:
      case Wayfinder::kPartlyInternal:
        return Report(Result::Ok, "location", text);
      case Wayfinder::kOutside:
        return ReportOutside(text);
      case Wayfinder::kDeciding:
        return Report(Result::Note, "location", text, Worded("Ask again: srctl location URL --wait"));
      case Wayfinder::kHotspot:
        return Report(Result::Problem, "location", text, SignIn());
      case Wayfinder::kNone:
        return Report(
            Result::Problem, "location", text,
            Worded("Connect to a network; if you are connected, ask your administrator about the beacons."));
      default:
        return Report(Result::Note, "location",
                      Worded("{finding} It is the number {number}.",
                             {{"finding", text}, {"number", std::to_string(location.value)}}));
    }
  }

  void ReportOutside(const Message& text) {
    if (!store_.gateways.empty()) return Report(Result::Ok, "location", text);
    Report(Result::Note, "location",
           Worded("{finding} The store has no gateway for that.", {{"finding", text}}),
           Worded("Connect to the store's network, for example through a VPN."));
  }

  const Situation& situation_;
  const StoreInfo& store_;
  const FindingReport& report_;
  ServerAnswers answers_;
};

}  // namespace

void CheckStore(const Situation& situation, const FindingReport& report) {
  StoreCheck(situation, report).Run();
}

}  // namespace Srctl::StoreChecks
