#include "libs/Bus/BusText.h"

#include "libs/Text/TextHelpers.h"

#include <algorithm>

namespace Bus {
namespace {

bool IsRefused(wchar_t character) {
  return character == 0 || util::IsNoncharacter(character);
}

}  // namespace

std::string Text(std::wstring_view text) {
  if (std::ranges::none_of(text, IsRefused)) return util::narrow(text);
  constexpr wchar_t kReplacement = 0xFFFD;
  std::wstring carried(text);
  std::ranges::replace_if(carried, IsRefused, kReplacement);
  return util::narrow(carried);
}

}  // namespace Bus
