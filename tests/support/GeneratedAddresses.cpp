#include "support/GeneratedAddresses.h"

namespace TestSupport {
namespace {

constexpr const char* kSchemes[] = {
    "",        "https://", "http://", "HTTPS://", "ftps://",   "ftp://", "s://",     "://",
    "https:/", "https:",   "file://", "//",       "https:///", "wss://", "http:s://"};
constexpr const char* kHosts[] = {"bank.example",
                                  "evil.example",
                                  "Bank.Example.",
                                  "b%61nk.example",
                                  "bank.example%2Fstores",
                                  "bank%252eexample",
                                  "m\u00FCnchen.example",
                                  "b\uFF41nk.example",
                                  "xn--mnchen-3ya.example",
                                  "localhost",
                                  "a.localhost",
                                  "127.0.0.1",
                                  "0x7f.1",
                                  "2130706433",
                                  "127.1",
                                  "[::1]",
                                  "[0:0::1]",
                                  "[::FFFF:1.2.3.4]",
                                  "[fe80::1%25lo]",
                                  "1:2:3:4:5:6:7:8",
                                  "::1",
                                  ""};
constexpr const char* kPorts[] = {"",  "",      "",       ":443", ":80", ":8443",
                                  ":", ":0443", ":99999", ":+80", ":E",  ":0"};
constexpr const char* kPages[] = {"",
                                  "/",
                                  "/discovery",
                                  "/a:b@evil.example",
                                  "/s://localhost:81/d",
                                  "?q=1",
                                  "?@evil.example/",
                                  "#@evil.example/",
                                  "/a b?c d#e",
                                  "/../../x"};
// What ends a user, a host, a port or a page for one reader or another, and what turns into that.
constexpr const char* kMarks[] = {
    "@",      ":",      "/",      "?",      "#",      "\\",     "%",      "%2F",    "%40",    "%3A",
    "%00",    "%09",    "%2e",    "\uFF0F", "\uFF1A", "\uFF20", "\uFF1F", "\uFF0E", "\u3002", "\u2100",
    "\u00AD", "\u200D", "\u0130", " ",      "\t",     "\r\n",   ";",      "&",      "[",      "]",
    "s://",   "://",    "//",     "x@",     ":y@",    "|",      "\u007F"};

}  // namespace

std::string GeneratedAddresses::Next() {
  std::string text = random_() % 8 == 0 ? Jumble() : Address();
  for (auto damages = random_() % 3; damages > 0; --damages) Damage(text);
  return text;
}

std::string GeneratedAddresses::Address() {
  std::string text = OneOf(kSchemes);
  text += OneOf(kHosts);
  text += OneOf(kPorts);
  return text += OneOf(kPages);
}

std::string GeneratedAddresses::Jumble() {
  std::string text;
  for (auto pieces = 1 + random_() % 6; pieces > 0; --pieces) {
    text += OneOf(kHosts);
    text += OneOf(kMarks);
  }
  return text;
}

void GeneratedAddresses::Damage(std::string& text) {
  std::size_t at = random_() % (text.size() + 1);
  // Not inside a character.
  while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U) ++at;
  text.insert(at, OneOf(kMarks));
}

}  // namespace TestSupport
