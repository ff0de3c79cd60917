#pragma once

#include "Shared/Owners.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Stores {

// Opens files in place of the agent: notes what it is asked, and tells what the test says.
class StandInOpenings {
 public:
  // `source`: the root of the project's files. Owns the agent's name on the bus from now on.
  StandInOpenings(const std::string& busAddress, const std::string& source);
  ~StandInOpenings();
  StandInOpenings(const StandInOpenings&) = delete;
  StandInOpenings& operator=(const StandInOpenings&) = delete;

  // The paths so far; the first opening has the number 1.
  [[nodiscard]] const std::vector<std::string>& Opened() const { return opened_; }
  // Tells whoever opened a file last. `stores`: as GLib prints an aa{sv}.
  void Finish(std::uint64_t opening, const std::string& outcome, const std::string& stores);
  void GiveUpTheName();

 private:
  static void Take(GDBusConnection* bus, const char* sender, const char* path, const char* interface,
                   const char* method, GVariant* parameters, GDBusMethodInvocation* call, gpointer self);

  ObjectPtr<GDBusConnection> bus_;
  std::vector<std::string> opened_;
  std::string caller_;
};

}  // namespace Stores
