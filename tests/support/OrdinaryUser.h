#pragma once

#include <unistd.h>

#include <exception>
#include <filesystem>
#include <stdexcept>

namespace TestSupport {

// Whom the modes of files bind: a test that root runs goes on as another user, who owns the folder, until
// this object goes.
class OrdinaryUser {
 public:
  explicit OrdinaryUser(const std::filesystem::path& folder) : isRoot_(::geteuid() == 0) {
    constexpr uid_t kNobody = 65534;
    if (isRoot_ && (::chown(folder.c_str(), kNobody, kNobody) != 0 || ::seteuid(kNobody) != 0))
      throw std::runtime_error("cannot go on as another user");
  }
  ~OrdinaryUser() {
    if (isRoot_ && ::seteuid(0) != 0) std::terminate();
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  bool isRoot_;
};

}  // namespace TestSupport
