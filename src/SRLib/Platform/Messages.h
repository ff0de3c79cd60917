#pragma once

#include <string>
#include <string_view>

// Texts for the user, by the id under which the message catalogue holds them.
namespace util {

enum MessageId : int {
  kMessageNotAServiceRecord = 1576,
  kMessageStoreTitle = 1600,
  kMessageDiscoveryTitle = 1608,
  kMessageNotADiscoveryDocument = 1616,
  kMessageDiscoveryConnectionFailed = 1624,
  kMessageServerNotContacted = 1632,
  kMessageEmptyHostName = 1656,
  kMessageCertificatesNotFetched = 1696,
  kMessageStoresNotRead = 1712,
};

// The message with its first "%S" replaced by `argument` (UTF-8).
[[nodiscard]] std::wstring WithArgument(std::wstring message, std::string_view argument);

}  // namespace util
