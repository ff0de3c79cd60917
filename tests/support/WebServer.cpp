#include "support/WebServer.h"

#include "support/LoopbackListener.h"

#include <fstream>

namespace TestSupport {
namespace {

// Documents lie in a folder of the test's user, whom the worker would otherwise not stay.
constexpr const char* kMainConfiguration = R"(user root;
daemon off;
worker_processes 1;
pid nginx.pid;
error_log error.log;
events { worker_connections 64; }
http {
  access_log off;
  client_body_temp_path temporary;
  proxy_temp_path temporary;
  fastcgi_temp_path temporary;
  uwsgi_temp_path temporary;
  scgi_temp_path temporary;
  ssl_protocols TLSv1.2 TLSv1.3;
  default_type text/xml;
@SERVER@
}
)";

void Replace(std::string& text, const std::string& name, const std::string& value) {
  std::size_t at = 0;
  while ((at = text.find(name, at)) != std::string::npos) {
    text.replace(at, name.size(), value);
    at += value.size();
  }
}

}  // namespace

std::string ServerBlock(const std::string& listenParameters, const std::string& directives) {
  return "server {\nlisten 127.0.0.1:@PORT@ " + listenParameters + ";\nroot @DOCUMENTS@;\n" + directives +
         "\n}";
}

WebServer::WebServer(const std::string& serverBlock) {
  // nginx takes over the sockets that this variable names, so nobody else can get the port before it.
  const LoopbackListener listener;
  port_ = listener.port;
  WriteConfiguration(serverBlock);
  const std::string folder = folder_.Path().string() + "/";
  const int socket = listener.socket.Get();
  process_.emplace(std::vector<std::string>{"/usr/sbin/nginx", "-p", folder, "-e", folder + "error.log", "-c",
                                            folder + "nginx.conf"},
                   std::vector<std::string>{"NGINX=" + std::to_string(socket) + ";"},
                   ChildOptions{.captureErrors = true, .keepOpen = {socket}});
}

void WebServer::WriteConfiguration(std::string serverBlock) const {
  Replace(serverBlock, "@PORT@", std::to_string(port_));
  Replace(serverBlock, "@DOCUMENTS@", (folder_.Path() / "documents").string());
  std::filesystem::create_directories(folder_.Path() / "documents");
  std::string configuration = kMainConfiguration;
  Replace(configuration, "@SERVER@", serverBlock);
  std::ofstream(folder_.Path() / "nginx.conf") << configuration;
}

std::string WebServer::Address(const std::string& scheme) const {
  return scheme + "://localhost:" + std::to_string(port_);
}

}  // namespace TestSupport
