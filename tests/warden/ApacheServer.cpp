#include "warden/ApacheServer.h"

#include "support/TrustedAuthority.h"

#include <fstream>

namespace TestSupport {
namespace {

namespace fs = std::filesystem;

constexpr const char* kConfiguration = R"(ServerRoot @FOLDER@
ServerName localhost
Listen 127.0.0.1:@PORT@ https
SSLEngine on
SSLCertificateFile @CERTIFICATE@
SSLCertificateKeyFile @KEY@
PidFile @FOLDER@/pid
Mutex file:@FOLDER@ default
ErrorLog /dev/stderr
LogLevel notice
StartServers 1
@MODULES@
<IfModule unixd_module>
User www-data
Group www-data
</IfModule>
DocumentRoot @FOLDER@/documents
<Directory @FOLDER@/documents>
@DIRECTIVES@
</Directory>
)";

void Replace(std::string& text, const std::string& name, const std::string& value) {
  for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size())) {
    text.replace(at, name.size(), value);
  }
}

void Write(const fs::path& file, const std::string& content) {
  std::ofstream(file) << content;
  fs::permissions(file, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
}

}  // namespace

ApacheServer::ApacheServer(const std::vector<std::string>& modules, const std::string& directives,
                           const std::vector<std::pair<std::string, std::string>>& files,
                           const std::vector<std::string>& environment) {
  // The server's workers run as another user where the test runs as root.
  fs::permissions(folder_.Path(), static_cast<fs::perms>(0755));
  fs::create_directories(folder_.Path() / "documents");
  Write(folder_.Path() / "documents/discovery", "<found/>");
  for (const auto& [name, content] : files) Write(folder_.Path() / name, content);
  WriteConfiguration(modules, directives);
  // On its end it sends a signal to its whole process group.
  process_.emplace(std::vector<std::string>{"setsid", "/usr/sbin/apache2", "-DFOREGROUND", "-f",
                                            (folder_.Path() / "apache.conf").string()},
                   environment, ChildOptions{.captureErrors = true});
  process_->WaitForOutput("resuming normal operations");
}

void ApacheServer::WriteConfiguration(const std::vector<std::string>& modules, std::string directives) const {
  std::vector<std::string> all{"mpm_prefork", "ssl", "authn_core", "authz_core", "authz_user", "authn_file"};
  all.insert(all.end(), modules.begin(), modules.end());
  std::string lines;
  for (const std::string& name : all) {
    lines += "LoadModule " + name + "_module /usr/lib/apache2/modules/mod_" + name + ".so\n";
  }
  std::string configuration = kConfiguration;
  Replace(configuration, "@MODULES@", lines);
  Replace(configuration, "@DIRECTIVES@", directives);
  Replace(configuration, "@CERTIFICATE@", TrustedAuthority().File("good.pem").string());
  Replace(configuration, "@KEY@", TrustedAuthority().File("good.key").string());
  Replace(configuration, "@FOLDER@", folder_.Path().string());
  Replace(configuration, "@PORT@", std::to_string(port_.Number()));
  std::ofstream(folder_.Path() / "apache.conf") << configuration;
}

std::wstring ApacheServer::Address() const {
  return L"https://localhost:" + std::to_wstring(port_.Number());
}

}  // namespace TestSupport
