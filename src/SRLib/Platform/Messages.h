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

// The text for the user's language, or an explanation of why there is none. Never null. The characters stay
// good until a different text is looked up under the same id; callers copy them at once. Any thread. The
// platform defines it.
[[nodiscard]] const wchar_t* MessageFromResourceW(int id);

// The text with its first "%S" replaced by `argument` (UTF-8).
[[nodiscard]] std::wstring MessageWithArgument(int id, std::string_view argument);

}  // namespace util
