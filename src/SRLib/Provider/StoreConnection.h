#pragma once

#include "SRLib/Provider/ProviderParts.h"
#include "SRLib/SRStore.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ServiceRecords {

// The way to a store for its discovery response: from the store itself or through its gateway, as the network
// location demands. Any thread.
class StoreConnection {
 public:
  // `parts` must outlive this.
  explicit StoreConnection(const ProviderParts& parts) : parts_(parts) {}

  // Blocks: up to two minutes until the location is known, then for the requests and for what the user is
  // asked. `canceled` is only touched when a request goes through the authentication manager.
  bool Make(const SRStore& store, std::wstring& response, bool& canceled) const;

 private:
  // The location as soon as it is decided; nothing when that takes too long or the process is about to end.
  [[nodiscard]] std::optional<std::uint32_t> DecidedLocation(const std::wstring& storeURL) const;
  bool RequestDirectly(const std::wstring& storeURL, std::wstring& response) const;
  bool RequestThroughWarden(const SRStore& store, std::wstring& response, bool& canceled) const;

  const ProviderParts& parts_;
};

}  // namespace ServiceRecords
