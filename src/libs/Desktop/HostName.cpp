#include "libs/Desktop/HostName.h"

#include "libs/Lifetime/UniqueHandle.h"

#include <gio/gio.h>

namespace Desktop {

std::string UnicodeHostName(const std::string& ascii) {
  const Lifetime::UniqueHandle<char, g_free> unicode(g_hostname_to_unicode(ascii.c_str()));
  return unicode != nullptr ? unicode.get() : ascii;
}

}  // namespace Desktop
