#include "libs/Wayfinder/Probing/BeaconAddress.h"

#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Text/UTF8Thread.h"
#include "libs/Wayfinder/Probing/CurlHandles.h"

#include <arpa/inet.h>

#include <string_view>

namespace Wayfinding {
namespace {

std::string Part(CURLU& url, CURLUPart part, unsigned int flags = 0) {
  char* text = nullptr;
  if (curl_url_get(&url, part, &text, flags) != CURLUE_OK) return {};
  const WFCurlTextPtr owned(text);
  return text;
}

WFCurlUrlPtr Parse(const std::string& text, unsigned int flags) {
  WFCurlUrlPtr url(curl_url());
  if (url != nullptr && curl_url_set(url.get(), CURLUPART_URL, text.c_str(), flags) != CURLUE_OK) url.reset();
  return url;
}

// "store.example." is "store.example", but libcurl would look it up by itself.
std::string WithoutTrailingDots(const std::string& host) {
  return host.substr(0, host.find_last_not_of('.') + 1);
}

std::string BareHost(CURLU& url) {
  std::string host = util::AsciiLowerCased(Part(url, CURLUPART_HOST));
  if (host.size() > 2 && host.front() == '[') host = host.substr(1, host.size() - 2);
  return WithoutTrailingDots(host);
}

bool IsNumeric(const std::string& host) {
  in6_addr address{};
  return ::inet_pton(AF_INET, host.c_str(), &address) == 1 ||
         ::inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

void DropWhatIsNeverSent(CURLU& url, bool secure) {
  curl_url_set(&url, CURLUPART_FRAGMENT, nullptr, 0);
  if (!secure) return;
  curl_url_set(&url, CURLUPART_PATH, nullptr, 0);
  curl_url_set(&url, CURLUPART_QUERY, nullptr, 0);
}

std::optional<BeaconURL> ParseURL(const std::string& text) {
  const Address::SplitURL own(text);
  const Address::SendingForm form = FormForSending(own, own.WithoutPage() + "/" + own.page.value_or(""));
  const WFCurlUrlPtr url = form.reading == Address::Reading::Same ? Parse(form.text, 0) : nullptr;
  if (url == nullptr) return std::nullopt;
  DropWhatIsNeverSent(*url, own.IsSecure());
  const std::string host = WithoutTrailingDots(util::AsciiLowerCased(Part(*url, CURLUPART_HOST)));
  if (host.empty() || curl_url_set(url.get(), CURLUPART_HOST, host.c_str(), 0) != CURLUE_OK)
    return std::nullopt;
  BeaconURL beacon{.url = Part(*url, CURLUPART_URL),
                   .host = BareHost(*url),
                   .port = Part(*url, CURLUPART_PORT, CURLU_DEFAULT_PORT),
                   .secure = own.IsSecure()};
  if (beacon.url.empty() || beacon.host.empty()) return std::nullopt;
  return beacon;
}

// The authority of a URL for a host with an optional port; empty for any other text.
std::string Authority(const std::string& text) {
  if (text.find_first_of("/?#@\\") != std::string::npos) return {};
  in6_addr address{};
  return ::inet_pton(AF_INET6, text.c_str(), &address) == 1 ? "[" + text + "]" : text;
}

std::vector<std::string> URLsOf(const std::string& text) {
  if (text.find("://") != std::string::npos) return {text};
  const std::string authority = Authority(text);
  if (authority.empty()) return {};
  return {"https://" + authority, "http://" + authority};
}

}  // namespace

std::string BeaconAddress::Key() const {
  std::string key;
  for (const BeaconURL& url : urls) key += url.url + ' ';
  return key;
}

bool IsLoopbackHost(const std::string& host) {
  in_addr four{};
  in6_addr six{};
  if (::inet_pton(AF_INET, host.c_str(), &four) == 1) return (ntohl(four.s_addr) >> 24) == 127;
  if (::inet_pton(AF_INET6, host.c_str(), &six) == 1) return IN6_IS_ADDR_LOOPBACK(&six);
  return host == "localhost" || host.ends_with(".localhost");
}

std::string HostOfReference(const std::string& reference, const std::string& baseURL) {
  const util::UTF8Thread utf8;
  const WFCurlUrlPtr url = Parse(baseURL, 0);
  constexpr unsigned int kAnyURL = CURLU_NON_SUPPORT_SCHEME | CURLU_URLENCODE;
  if (url == nullptr || curl_url_set(url.get(), CURLUPART_URL, reference.c_str(), kAnyURL) != CURLUE_OK)
    return {};
  const std::string ascii =
      util::IsUTF8(Part(*url, CURLUPART_HOST)) ? Part(*url, CURLUPART_HOST, CURLU_PUNYCODE) : std::string();
  if (!ascii.empty()) curl_url_set(url.get(), CURLUPART_HOST, ascii.c_str(), 0);
  return BareHost(*url);
}

std::optional<BeaconAddress> ParseBeaconAddress(const std::string& text) {
  BeaconAddress address;
  for (const std::string& candidate : URLsOf(std::string(util::Trimmed(text)))) {
    std::optional<BeaconURL> url = ParseURL(candidate);
    if (!url) return std::nullopt;
    address.urls.push_back(std::move(*url));
  }
  if (address.urls.empty()) return std::nullopt;
  const std::string& host = address.urls.front().host;
  address.isLoopback = IsLoopbackHost(host);
  address.isNumeric = IsNumeric(host);
  return address;
}

}  // namespace Wayfinding
