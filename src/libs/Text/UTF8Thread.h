#pragma once

#include <locale.h>

// Lets the calling thread's text be UTF-8 as long as it lives: libcurl reads host names in the thread's
// locale. Where the locale is missing, the thread's own stays and only ASCII names can be read.
class UTF8Thread {
 public:
  UTF8Thread() : before_(::uselocale(Locale())) {}
  ~UTF8Thread() { ::uselocale(before_); }
  UTF8Thread(const UTF8Thread&) = delete;
  UTF8Thread& operator=(const UTF8Thread&) = delete;

 private:
  static locale_t Locale() {
    static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return utf8;
  }

  locale_t before_;
};
