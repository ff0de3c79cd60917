#include "libs/Warden_SDK/Url.h"

#include "libs/Address/SendingForm.h"
#include "libs/Text/TextHelpers.h"

namespace Warden {
namespace {

// What a request line may hold stays; the rest would be encoded on the way, and a digest made of the URL
// would be of another one.
std::string Encoded(std::string_view target) {
  constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
  std::string encoded;
  for (const char character : target) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte > 0x20 && byte < 0x7F) {
      encoded += character;
    } else {
      encoded += {'%', kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]};
    }
  }
  return encoded;
}

}  // namespace

std::optional<Url> Url::Parse(std::string_view text) {
  const Address::SplitURL own(text);
  const std::string page = own.page.value_or("");
  if (FormForSending(own, own.WithoutPage() + "/" + page).reading != Address::Reading::Same)
    return std::nullopt;
  const bool hasPort = !own.port.empty() && own.port != own.DefaultPort();
  return Url{.scheme = own.protocol,
             .host = own.server,
             .authority = hasPort ? own.server + ":" + own.port : own.server,
             .target = "/" + Encoded(page.substr(0, page.find('#')))};
}

std::string Url::Host() const {
  return host.starts_with('[') && host.ends_with(']') ? host.substr(1, host.size() - 2) : host;
}

std::string Url::ServerKey() const {
  return util::AsciiLowerCased(authority);
}

std::optional<Url> ThroughGateway(const Url& gateway, const Url& store) {
  if (gateway.target.find('?') != std::string::npos) return std::nullopt;
  Url url = gateway;
  while (url.target.ends_with('/')) url.target.pop_back();
  url.target += "/" + store.scheme + "/" + store.authority + store.target;
  return url;
}

}  // namespace Warden
