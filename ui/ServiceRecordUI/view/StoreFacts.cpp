#include "view/StoreFacts.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "request/Details.h"

#include <algorithm>

namespace Dialogs {

using namespace Windows;

namespace {

using PropertyList::Dictionary;

std::string HostIn(const Dictionary& details) {
  const std::string host = Details::Text(details, "StoreHost");
  return host.empty() ? ShownText::HostOf(Details::Text(details, "StoreURL")) : ShownText::Whole(host);
}

const char* CaptionOfVerified(const std::string& server) {
  if (server == "gateway") return Translated("Default gateway");
  if (server == "store") return Translated("The store’s own server");
  return Translated("Server");
}

// Whoever is not named is no less a fact than somebody who is.
void AddNamed(std::vector<Fact>& facts, const char* caption, const Dictionary& details, const char* key) {
  if (details.Find(key) == nullptr) return;
  const std::string name = ShownText::Whole(Details::Text(details, key));
  facts.push_back({caption, name.empty() ? Translated("Not named in the certificate") : name});
}

// The verified host and, on a line of its own, its ASCII form where it is another one.
std::string VerifiedHostIn(const Dictionary& details) {
  const std::string host = ShownText::Whole(Details::Text(details, "VerifiedHost"));
  const std::string ascii = ShownText::Whole(Details::Text(details, "VerifiedHostASCII"));
  return host.empty() || ascii.empty() || ascii == host ? host : host + "\n" + ascii;
}

std::vector<Fact> VerifiedFacts(const Dictionary& details) {
  std::vector<Fact> facts;
  const std::string host = VerifiedHostIn(details);
  if (!host.empty()) facts.push_back({CaptionOfVerified(Details::Text(details, "VerifiedServer")), host});
  AddNamed(facts, Translated("Operated by"), details, "StoreProvider");
  AddNamed(facts, Translated("Certificate issued by"), details, "CertificateName");
  return facts;
}

std::vector<Fact> GatewayFacts(const Dictionary& details) {
  std::vector<Details::Gateway> gateways = Details::Gateways(details);
  std::stable_partition(gateways.begin(), gateways.end(),
                        [](const Details::Gateway& gateway) { return gateway.isDefault; });
  std::vector<Fact> facts;
  const std::size_t shown = std::min(gateways.size(), StoreFacts::kMostGateways);
  for (std::size_t index = 0; index < shown; ++index) {
    const Details::Gateway& gateway = gateways[index];
    facts.push_back({gateway.isDefault ? Translated("Default gateway") : Translated("Other gateway"),
                     ShownGateway(gateway.name, gateway.url)});
  }
  if (shown < gateways.size()) {
    facts.push_back({Translated("Other gateways"), MoreText(gateways.size() - shown)});
  }
  return facts;
}

}  // namespace

StoreFacts StoreFacts::Of(const Dictionary& details) {
  StoreFacts facts;
  facts.name = ShownText::Name(Details::Text(details, "StoreName"));
  facts.host = HostIn(details);
  facts.hostASCII = ShownText::Whole(Details::Text(details, "StoreHostASCII"));
  if (facts.hostASCII == facts.host) facts.hostASCII.clear();
  facts.address = ShownText::Whole(Details::Text(details, "StoreURL"));
  facts.verified = VerifiedFacts(details);
  facts.gateways = GatewayFacts(details);
  return facts;
}

std::string ShownGateway(const std::string& name, const std::string& url) {
  std::string address = ShownText::Whole(url);
  if (address.empty()) address = Translated("No address");
  std::string shownName = ShownText::Name(name);
  if (shownName.empty() || shownName == address) return address;
  return shownName + "\n" + address;
}

std::string MoreText(std::size_t count) {
  const char* const pattern = TranslatedCount("{count} more", "{count} more", count);
  return ShownText::Sentence(pattern, {{"count", std::to_string(count)}});
}

}  // namespace Dialogs
