#pragma once

#include "libs/Address/SplitURL.h"

#include <string>

namespace Address {

// How libcurl, which sends all requests, reads an address.
enum class Reading {
  Same,   // its scheme, host and port are our own, and there is no user
  Other,  // it would turn to another server than the one that was verified and shown, or log on as a user
  None,   // no URL
};

struct SendingForm {
  Reading reading = Reading::None;
  // What libcurl is to be given; empty unless it reads the same. In ASCII: blanks and other characters are
  // percent-encoded, a host name is in its ASCII form, path and query otherwise stand as they are, dots in
  // the path included.
  std::string text;
};

// `url` (UTF-8) is the address as it is to be sent, `own` our reading of it. Hosts are the same when they
// differ only in case, percent-encoding or the form of an international name, or are one numeric IPv6
// address; an empty port is the default one. Any thread.
[[nodiscard]] SendingForm FormForSending(const SplitURL& own, const std::string& url);

}  // namespace Address
