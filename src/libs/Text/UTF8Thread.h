#pragma once

#include <locale.h>

namespace util {

// Null where it is missing. Any thread.
inline locale_t UTF8Locale() {
  static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return utf8;
}

// Lets the calling thread's text be UTF-8 as long as it lives: libcurl reads host names in the thread's
// locale. Where the locale is missing, the thread's own stays and only ASCII names can be read.
class UTF8Thread {
 public:
  UTF8Thread() : before_(::uselocale(UTF8Locale())) {}
  ~UTF8Thread() { ::uselocale(before_); }
  UTF8Thread(const UTF8Thread&) = delete;
  UTF8Thread& operator=(const UTF8Thread&) = delete;

 private:
  locale_t before_;
};

}  // namespace util
