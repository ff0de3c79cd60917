#include "SRLib/Provider/StoreURL.h"

#include "libs/Text/TextHelpers.h"
#include "libs/Text/UTF8Thread.h"

#include <wctype.h>

#include <algorithm>

namespace ServiceRecords {
namespace {

constexpr std::wstring_view kDiscoverySuffix = L"/discovery";

// Where there is no UTF-8 locale, ASCII only.
wchar_t LowerCasedCharacter(wchar_t character) {
  const locale_t unicode = util::UTF8Locale();
  const wint_t wide = std::char_traits<wchar_t>::to_int_type(character);
  return static_cast<wchar_t>(unicode != nullptr ? ::towlower_l(wide, unicode) : ::towlower(wide));
}

}  // namespace

std::wstring LowerCased(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(), LowerCasedCharacter);
  return text;
}

StoreURL::StoreURL(const std::wstring& url) : whole_(LowerCased(url)), utf8_(util::narrow(whole_)) {}

std::wstring_view StoreURL::Trimmed() const {
  std::wstring_view trimmed = whole_;
  if (trimmed.ends_with(kDiscoverySuffix)) trimmed.remove_suffix(kDiscoverySuffix.size());
  return trimmed;
}

}  // namespace ServiceRecords
