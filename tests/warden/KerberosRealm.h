#pragma once

#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"
#include "warden/ReservedPort.h"

#include <optional>
#include <string>
#include <vector>

namespace TestSupport {

// A Kerberos realm of its own, with one ticket server on the loopback address, the service HTTP/localhost and
// the user "user". The test program's environment points there. Everything ends with this object.
class KerberosRealm {
 public:
  KerberosRealm();
  ~KerberosRealm();

  // Gets the user a ticket, one that could be handed on to a server.
  void LogOn();
  // The key of the service, for its server.
  [[nodiscard]] std::string Keytab() const;
  // What the service's programs run with.
  [[nodiscard]] std::vector<std::string> Environment() const;

 private:
  void Run(const std::vector<std::string>& command) const;

  TemporaryFolder folder_;
  ReservedPort port_;
  std::optional<ChildProcess> server_;
};

}  // namespace TestSupport
