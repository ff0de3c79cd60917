#include "libs/Address/SplitURL.h"

#include <algorithm>

namespace Address {
namespace {

constexpr std::string_view kSeparator = "://";

// Whether the text names a protocol that counts as secure. Removes it.
bool TakeProtocol(std::string_view& text) {
  const std::size_t separator = text.find(kSeparator);
  if (separator == std::string_view::npos) return false;
  // Any scheme that ends in s counts as secure, every other one as plain: deliberate.
  const bool isSecure = separator != 0 && (text[separator - 1] == 's' || text[separator - 1] == 'S');
  text.remove_prefix(separator + kSeparator.size());
  return isSecure;
}

std::optional<std::string> TakePage(std::string_view& text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  const std::string_view page = text.substr(slash + 1);
  text = text.substr(0, slash);
  return std::string(page);
}

std::optional<std::string> TakePort(std::string_view& text) {
  const auto count = std::count(text.begin(), text.end(), ':');
  if (count == 0) return std::nullopt;
  const std::size_t last = text.rfind(':');
  // Eight colons are an IPv6 address of eight groups, without brackets, and a port.
  const bool hasPort = count == 1 || count == 8 || text.find(']') < last;
  if (!hasPort) return std::nullopt;
  const std::string_view port = text.substr(last + 1);
  text = text.substr(0, last);
  return std::string(port);
}

}  // namespace

SplitURL::SplitURL(std::string_view url) {
  if (TakeProtocol(url)) protocol += 's';
  page = TakePage(url);
  port = TakePort(url).value_or(DefaultPort());
  if (!url.empty()) server = url;
}

std::string SplitURL::WithoutPage() const {
  const std::string url = protocol + "://" + server;
  return port == DefaultPort() ? url : url + ":" + port;
}

}  // namespace Address
