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
  // One sentence each, to say why.
  kReasonListNotWritten = 1720,
  kReasonListNotRead = 1728,
  kReasonListFull = 1736,
  kReasonExpired = 1744,
  kReasonNotYetValid = 1752,
  kReasonOtherHost = 1760,
  kReasonUnknownIssuer = 1768,
  kReasonRevoked = 1776,
  kReasonNoCommonProtocol = 1784,
  kReasonNoTls = 1792,
  kReasonNotReached = 1800,
  kReasonNotSecured = 1808,
  kReasonCouldNotAsk = 1856,
  kReasonIssuerExpired = 1864,
  kReasonIssuerNotYetValid = 1872,
  kReasonBrokenOff = 1880,
  kReasonNotRead = 1888,
  kReasonUnusableName = 1896,
  kReasonInList = 1928,
  kReasonNoFile = 1936,
  kReasonNotPermitted = 1944,
  kReasonNoDocument = 1952,
  kReasonReadingFailed = 1960,
  kReasonNoHost = 1968,
  kReasonNamelessIssuer = 1976,
  // What the desktop tells.
  kNoticeAdded = 1816,
  kNoticeReplaced = 1824,
  kNoticeSeveralAdded = 1832,
  kNoticeShow = 1840,
  kNoticeNotOpened = 1848,
  kNoticeNotRead = 1904,
  kNoticeUnsaved = 1912,
  kNoticeSeveralUnsaved = 1920,
};

// The message with its first "%S" replaced by `argument` (UTF-8).
[[nodiscard]] std::wstring WithArgument(std::wstring message, std::string_view argument);

}  // namespace util
