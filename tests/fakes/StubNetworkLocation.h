#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace TestSupport {

// Where the machine stands relative to the stores.
class StubNetworkLocation {
 public:
  // The answer for every store from now on; 2 (outside) until it is set.
  void AnswerWith(std::uint32_t location) {
    everywhere_ = location;
    byURL_.clear();
  }
  // The answer for the store at this URL, until the one for every store is set.
  void AnswerWith(std::uint32_t location, const std::wstring& storeURL) { byURL_[storeURL] = location; }

  [[nodiscard]] std::uint32_t RelativeTo(const std::wstring& storeURL) const {
    const auto answer = byURL_.find(storeURL);
    return answer == byURL_.end() ? everywhere_ : answer->second;
  }

 private:
  std::uint32_t everywhere_ = 2;
  std::map<std::wstring, std::uint32_t> byURL_;
};

}  // namespace TestSupport
