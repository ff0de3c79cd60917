#pragma once

#include <string>
#include <string_view>

namespace ServiceRecords {

// The text in lower case, character by character, whatever the locale of the process.
[[nodiscard]] std::wstring LowerCased(std::wstring text);

// A store's URL in the forms in which it is looked for, all in lower case.
class StoreURL {
 public:
  explicit StoreURL(const std::wstring& url);

  [[nodiscard]] const std::wstring& Whole() const { return whole_; }
  // Without its discovery suffix. Good for as long as this object stays where it is.
  [[nodiscard]] std::wstring_view Trimmed() const;
  [[nodiscard]] const std::string& UTF8() const { return utf8_; }

 private:
  std::wstring whole_;
  std::string utf8_;
};

}  // namespace ServiceRecords
