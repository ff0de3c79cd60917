#pragma once

#include <string>

namespace TestSupport {

// Whole HTTP responses that end their connection.
inline std::string Response(const std::string& status, const std::string& headers = {}) {
  return "HTTP/1.1 " + status + "\r\n" + headers + "Content-Length: 0\r\nConnection: close\r\n\r\n";
}
inline const std::string kGood = Response("200 OK");
inline const std::string kUnavailable = Response("503 Service Unavailable");
inline const std::string kToPortal = Response("302 Found", "Location: http://portal.example/login\r\n");

}  // namespace TestSupport
