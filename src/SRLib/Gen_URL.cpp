#include "SRLib/Gen_URL.h"

#include <algorithm>

Gen_URL::Gen_URL(const std::string& url) : url_(url) {
  ExtractProtocol();
  ExtractPage();
  ExtractPort();
  if (!url_.empty()) server_ = url_;
  url_.clear();
}

void Gen_URL::ExtractProtocol() {
  if (url_.size() < 3) return;
  const std::size_t separator = url_.find("://");
  if (separator == std::string::npos) return;
  // Any scheme that ends in s counts as secure, every other one as plain: deliberate.
  if (separator != 0 && (url_[separator - 1] == 's' || url_[separator - 1] == 'S')) protocol_ += 's';
  url_ = url_.substr(separator + 3);
}

void Gen_URL::ExtractPage() {
  page_ = "No Page";
  const std::size_t slash = url_.find('/');
  if (slash == std::string::npos) return;
  page_ = url_.substr(slash + 1);
  url_ = url_.substr(0, slash);
}

void Gen_URL::ExtractPort() {
  port_ = IsSecure() ? "443" : "80";
  const auto count = std::count(url_.begin(), url_.end(), ':');
  if (count == 0) return;
  const std::size_t last = url_.rfind(':');
  // Eight colons are an IPv6 address of eight groups, without brackets, and a port.
  const bool hasPort = count == 1 || count == 8 || url_.find(']') < last;
  if (!hasPort) return;
  port_ = url_.substr(last + 1);
  url_ = url_.substr(0, last);
}

std::string Gen_URL::GetPagelessURL() const {
  const std::string url = protocol_ + "://" + server_;
  const bool isDefaultPort = port_ == (IsSecure() ? "443" : "80");
  return omitDefaultPort_ && isDefaultPort ? url : url + ":" + port_;
}

std::string Gen_URL::GetDisplayURL() const {
  return page_ == "Morvane/Brisk/config.xml" ? GetPagelessURL() : GetPagelessURL() + "/" + page_;
}

const std::string& Gen_URL::GetURL() {
  url_ = GetPagelessURL() + "/" + page_;
  return url_;
}
