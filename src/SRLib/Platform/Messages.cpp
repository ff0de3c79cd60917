#include "SRLib/Platform/Messages.h"

#include "libs/Text/TextHelpers.h"

namespace util {

std::wstring MessageWithArgument(int id, std::string_view argument) {
  std::wstring message = MessageFromResourceW(id);
  if (const std::size_t at = message.find(L"%S"); at != std::wstring::npos)
    message.replace(at, 2, widen(argument));
  return message;
}

}  // namespace util
