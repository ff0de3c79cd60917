#include "SRLib/Platform/Messages.h"

#include "libs/Text/TextHelpers.h"

namespace util {

std::wstring WithArgument(std::wstring message, std::string_view argument) {
  if (const std::size_t at = message.find(L"%S"); at != std::wstring::npos)
    message.replace(at, 2, widen(argument));
  return message;
}

}  // namespace util
