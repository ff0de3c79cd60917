#include "bus/UserBus.h"

#include <cerrno>
#include <utility>

namespace Srctl {

std::optional<Bus::Connection> OpenUserBus(std::string& problem) {
  Bus::Result<Bus::Connection> bus = Bus::Connection::ToUserBus();
  if (bus) return std::move(*bus);
  problem = "there is no session bus";
  if (bus.Failure().code != ENOMEDIUM) problem += " (" + bus.Failure().text + ")";
  return std::nullopt;
}

}  // namespace Srctl
