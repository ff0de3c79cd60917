#pragma once

#include "SRLib/Platform/WardenFunctions.h"
#include "SRLib/Provider/ListChange.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class CGenericCSFactory;

namespace Config {
class Configurator;
}

namespace ServiceRecords {

class SRHTTPRequestFactory;
class SSLValidationFactory;
class StoreSnapshot;

// What the provider is made of besides its stores. The objects outlive it; any thread calls any of them.
struct ProviderParts {
  CGenericCSFactory& criticalSections;
  // The user's.
  const Config::Configurator& configuration;
  // Replaces `text` with the whole content of the document's file. False, `text` unchanged and `reason` a
  // sentence for the user, when the file cannot be opened or is not a regular file. Of a document that is too
  // large it reads enough to show that.
  std::function<bool(const std::wstring& path, std::wstring& text, std::wstring& reason)> readDocument;
  // Hands the whole list to the network-location library, which keeps it. Called inside the provider's lock.
  std::function<void(const std::shared_ptr<const StoreSnapshot>& stores)> publish;
  // Where the machine stands relative to the store at this URL: a network location value of the
  // network-location library. Never blocks.
  std::function<std::uint32_t(const std::wstring& storeURL)> locationRelativeTo;
  // The text for the user with that id (Platform/Messages.h).
  std::function<std::wstring(int id)> message;
  // Blocks for one second. False, without any delay, when the process is about to end.
  std::function<bool()> waitOneSecond;
  SRHTTPRequestFactory& requests;
  WardenFunctions warden;
  SSLValidationFactory& validations;
  // Tells others what has changed in the list that was just published. Called inside the provider's lock; may
  // be empty.
  std::function<void(const std::vector<ListChange>& changes)> announce = {};
};

}  // namespace ServiceRecords
