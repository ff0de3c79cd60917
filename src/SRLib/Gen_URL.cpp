#include "SRLib/Gen_URL.h"

Gen_URL::Gen_URL(const std::string& url) : split_(url) {}

std::string Gen_URL::GetPagelessURL() const {
  return split_.WithoutPage();
}

std::string Gen_URL::GetDisplayURL() const {
  return split_.page == "Morvane/Brisk/config.xml" ? GetPagelessURL() : WithPage();
}

const std::string& Gen_URL::GetURL() {
  url_ = WithPage();
  return url_;
}

std::string Gen_URL::WithPage() const {
  return GetPagelessURL() + "/" + split_.page.value_or("No Page");
}
