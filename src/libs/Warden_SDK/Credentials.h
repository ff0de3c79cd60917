#pragma once

#include "libs/CredentialWire/Secret.h"
#include "libs/Display/DisplayVariables.h"

#include <cstdint>
#include <string>
#include <tuple>

namespace Warden {

// What a credential is good for: a server and a realm of it. UTF-8.
struct CredentialKey {
  std::string protocol;  // "https"
  std::string host;      // host[:port], lower case, without the default port
  std::string realm;     // as the server wrote it

  bool operator==(const CredentialKey&) const = default;
  bool operator<(const CredentialKey& other) const {
    return std::tie(protocol, host, realm) < std::tie(other.protocol, other.host, other.realm);
  }
};

struct Credentials {
  std::string userName;
  CredentialWire::Secret password;
  CredentialWire::Secret code;  // good once, never stored
  bool isStored = false;
  bool remember = false;
};

// Where the user is asked. The descriptors are borrowed; -1 for none. Without a desktop it is this program's.
struct QuestionPlace {
  std::string storeName = {};
  int terminal = -1;
  int withdrawal = -1;  // readable when nobody wants the answer any more
  Display::Variables desktop = {};
};

struct CredentialQuestion {
  CredentialKey key;
  bool isGateway = false;
  std::uint32_t authentication = 1;  // as in MorvaneWardenRoute
  bool wasRejected = false;          // the stored credential, or the last answer, did not do
  std::string gatewayName = {};
  std::string rejectedUserName = {};  // of that one; empty where there is none
  QuestionPlace place = {};
};

}  // namespace Warden
