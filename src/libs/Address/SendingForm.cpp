#include "libs/Address/SendingForm.h"

#include "libs/Lifetime/UniqueHandle.h"
#include "libs/Text/UTF8Thread.h"

#include <arpa/inet.h>
#include <curl/curl.h>

#include <array>
#include <cwchar>

namespace Address {
namespace {

using CurlUrlPtr = Lifetime::UniqueHandle<CURLU, curl_url_cleanup>;
using CurlTextPtr = Lifetime::UniqueHandle<char, curl_free>;

// libcurl would write a blank in the query as a plus sign. One before the path makes the address no URL.
std::string WithEncodedBlanks(std::string address) {
  const std::size_t separator = address.find("://");
  if (separator == std::string::npos) return address;
  std::size_t at = address.find('/', separator + 3);
  while ((at = address.find(' ', at)) != std::string::npos) address.replace(at, 1, "%20");
  return address;
}

CurlUrlPtr Parse(const std::string& text, unsigned int flags) {
  CurlUrlPtr url(curl_url());
  if (url && curl_url_set(url.get(), CURLUPART_URL, text.c_str(), flags) != CURLUE_OK) url.reset();
  return url;
}

std::optional<std::string> Part(CURLU& url, CURLUPart part, unsigned int flags = 0) {
  char* text = nullptr;
  if (curl_url_get(&url, part, &text, flags) != CURLUE_OK) return std::nullopt;
  return CurlTextPtr(text).get();
}

std::string Decoded(const std::string& text) {
  int length = 0;
  const CurlTextPtr decoded(curl_easy_unescape(nullptr, text.data(), static_cast<int>(text.size()), &length));
  return decoded ? std::string(decoded.get(), static_cast<std::size_t>(length)) : std::string();
}

// Whether the bytes are characters of the calling thread's locale; libcurl would leak a name that is none.
bool IsText(const std::string& text) {
  std::mbstate_t state{};
  const char* bytes = text.c_str();
  return std::mbsrtowcs(nullptr, &bytes, 0, &state) != static_cast<std::size_t>(-1);
}

// Nothing when the host has no ASCII form. Asked for the host alone, libcurl would leak such a one.
std::optional<std::string> AsciiText(CURLU& url) {
  const std::optional<std::string> host = Part(url, CURLUPART_HOST);
  if (!host || !IsText(*host)) return std::nullopt;
  return Part(url, CURLUPART_URL, CURLU_PUNYCODE);
}

// A numeric IPv6 address in brackets has many spellings; any other text stays.
std::string OneSpelling(const std::string& host) {
  in6_addr address{};
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (host.size() < 2 || host.front() != '[' || host.back() != ']' ||
      ::inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &address) != 1)
    return host;
  return ::inet_ntop(AF_INET6, &address, text.data(), text.size());
}

bool IsSameHost(const std::string& one, const std::string& other) {
  const std::string left = OneSpelling(one);
  const std::string right = OneSpelling(other);
  return left.size() == right.size() && curl_strequal(left.c_str(), right.c_str()) != 0;
}

bool HoldsPercentSign(const std::string& host) {
  return host.find('%') != std::string::npos;
}

// Whether libcurl has read our scheme and port, this host and no user.
bool ReadsSame(CURLU& url, const SplitURL& own, const std::string& host) {
  const bool hasUser = Part(url, CURLUPART_USER) || Part(url, CURLUPART_PASSWORD);
  const std::string port = own.port.empty() ? own.DefaultPort() : own.port;
  return !hasUser && !HoldsPercentSign(host) && Part(url, CURLUPART_SCHEME) == own.protocol &&
         Part(url, CURLUPART_PORT, CURLU_DEFAULT_PORT) == port &&
         IsSameHost(Part(url, CURLUPART_HOST).value_or(""), host) && !Part(url, CURLUPART_ZONEID);
}

}  // namespace

SendingForm FormForSending(const SplitURL& own, const std::string& url) {
  // The C interface below would read only the part before it.
  if (url.find('\0') != std::string::npos) return {Reading::Other, {}};
  // Some releases of libcurl would look up one that is left in a host as "%25", for others it is no host.
  const std::string shown = Decoded(own.server);
  if (HoldsPercentSign(shown)) return {Reading::Other, {}};
  const util::UTF8Thread utf8;
  const CurlUrlPtr read = Parse(WithEncodedBlanks(url), CURLU_URLENCODE | CURLU_PATH_AS_IS);
  std::optional<std::string> text = read ? AsciiText(*read) : std::nullopt;
  if (!text) return {};
  const std::string host = Part(*read, CURLUPART_HOST, CURLU_PUNYCODE).value_or("");
  if (!ReadsSame(*read, own, shown)) return {Reading::Other, {}};
  // What libcurl is given it reads anew, and the ASCII form of a name may hold what ends a host.
  const CurlUrlPtr readAgain = Parse(*text, CURLU_PATH_AS_IS);
  if (!readAgain || !ReadsSame(*readAgain, own, host)) return {Reading::Other, {}};
  return {Reading::Same, std::move(*text)};
}

}  // namespace Address
