#include "warden/KerberosRealm.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace TestSupport {
namespace {

constexpr const char* kClientConfiguration = R"([libdefaults]
  default_realm = TEST.EXAMPLE
  dns_lookup_kdc = false
  dns_lookup_realm = false
  dns_canonicalize_hostname = false
  rdns = false
[realms]
  TEST.EXAMPLE = {
    kdc = 127.0.0.1:@PORT@
  }
[domain_realm]
  localhost = TEST.EXAMPLE
)";

constexpr const char* kServerConfiguration = R"([kdcdefaults]
  kdc_listen = ""
  kdc_tcp_listen = 127.0.0.1:@PORT@
[realms]
  TEST.EXAMPLE = {
    database_name = @FOLDER@/principal
    key_stash_file = @FOLDER@/stash
    acl_file = @FOLDER@/acl
  }
[logging]
  kdc = STDERR
)";

std::string Filled(std::string text, const std::string& folder, int port) {
  for (const auto& [name, value] :
       {std::pair<std::string, std::string>{"@FOLDER@", folder}, {"@PORT@", std::to_string(port)}}) {
    for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name)) {
      text.replace(at, name.size(), value);
    }
  }
  return text;
}

}  // namespace

KerberosRealm::KerberosRealm() {
  const std::string folder = folder_.Path().string();
  std::filesystem::permissions(folder_.Path(), static_cast<std::filesystem::perms>(0755));
  std::ofstream(folder + "/krb5.conf") << Filled(kClientConfiguration, folder, port_.Number());
  std::ofstream(folder + "/kdc.conf") << Filled(kServerConfiguration, folder, port_.Number());
  ::setenv("KRB5_CONFIG", (folder + "/krb5.conf").c_str(), 1);
  ::setenv("KRB5_KDC_PROFILE", (folder + "/kdc.conf").c_str(), 1);
  ::setenv("KRB5CCNAME", ("FILE:" + folder + "/tickets").c_str(), 1);
  Run({"kdb5_util", "create", "-s", "-W", "-P", "master-password"});
  Run({"kadmin.local", "-q", "addprinc -pw user-password user"});
  Run({"kadmin.local", "-q", "addprinc -randkey HTTP/localhost"});
  Run({"kadmin.local", "-q", "ktadd -k " + Keytab() + " HTTP/localhost"});
  std::filesystem::permissions(Keytab(), static_cast<std::filesystem::perms>(0644));
  server_.emplace(std::vector<std::string>{"krb5kdc", "-n", "-P", folder + "/kdc.pid"},
                  std::vector<std::string>{}, ChildOptions{.captureErrors = true});
  server_->WaitForOutput("commencing operation");
}

KerberosRealm::~KerberosRealm() {
  for (const char* name : {"KRB5_CONFIG", "KRB5_KDC_PROFILE", "KRB5CCNAME"}) ::unsetenv(name);
}

void KerberosRealm::LogOn() {
  Run({"bash", "-c", "kinit -f user <<<user-password"});
}

std::string KerberosRealm::Keytab() const {
  return (folder_.Path() / "keytab").string();
}

std::vector<std::string> KerberosRealm::Environment() const {
  return {"KRB5_KTNAME=" + Keytab(), "KRB5RCACHETYPE=none"};
}

void KerberosRealm::Run(const std::vector<std::string>& command) const {
  ChildProcess process(command, {}, {.captureErrors = true});
  if (process.Wait() != 0) throw std::runtime_error(command.front() + ": " + process.Output());
}

}  // namespace TestSupport
