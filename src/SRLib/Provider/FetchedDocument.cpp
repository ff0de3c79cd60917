#include "SRLib/Provider/FetchedDocument.h"

#include "SRLib/Gen_URL.h"
#include "SRLib/Provider/ProviderTrace.h"
#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Trace/SystemLog.h"

namespace ServiceRecords {
namespace {

// Scheme, host and port as requests read them; as they stand where no request would be sent.
std::string Server(const std::wstring& url) {
  Gen_URL address(util::narrow(url));
  const Address::SendingForm form = Address::FormForSending(address.GetSplitURL(), address.GetURL());
  Address::SplitURL server = form.text.empty() ? address.GetSplitURL() : Address::SplitURL(form.text);
  // A dot at its end makes a name no other one.
  if (server.server.ends_with('.')) server.server.pop_back();
  return util::AsciiLowerCased(server.WithoutPage());
}

// Which stores the server of one address speaks for.
class Ownership {
 public:
  Ownership(const std::wstring& askedURL, const StoreMap& held) : asked_(Server(askedURL)), held_(held) {
    for (const auto& [id, store] : held) servers_.insert(Server(store.GetStoreURL()));
  }

  [[nodiscard]] bool Covers(const std::wstring& id, const SRStore& described) const {
    const auto own = held_.find(id);
    if (own != held_.end() && Server(own->second.GetStoreURL()) != asked_) return false;
    const std::string server = Server(described.GetStoreURL());
    return server == asked_ || !servers_.contains(server);
  }

 private:
  const std::string asked_;
  const StoreMap& held_;
  std::set<std::string> servers_;  // of the held stores
};

std::string PassedOver(const std::wstring& id, const FetchedDocument& document, const char* reason) {
  std::string line = "Passed over store " + util::narrow(id) + " in the discovery document of store " +
                     util::narrow(document.askedID) + ": " + reason;
  SR_PROVIDER_TRACE(2) << "..." << line;
  return line;
}

}  // namespace

void PassOverStoresOfOthers(const FetchedDocument& document, const StoreMap& held,
                            const std::set<std::wstring>& removed, StoreMap& described) {
  const Ownership own(document.askedURL, held);
  std::erase_if(described, [&](const auto& entry) {
    const auto& [id, store] = entry;
    if (removed.contains(id)) {
      PassedOver(id, document, "it was deleted meanwhile");
    } else if (!own.Covers(id, store)) {
      trace::SystemLog::Error(PassedOver(id, document, "it belongs on another server"));
    } else {
      return false;
    }
    return true;
  });
}

}  // namespace ServiceRecords
