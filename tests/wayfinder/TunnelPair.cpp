#include "wayfinder/TunnelPair.h"

#include <fcntl.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>

#include <array>

namespace TestSupport {
namespace {

void CarryOne(int from, int to) {
  std::array<char, 65536> packet;
  const ssize_t size = ::read(from, packet.data(), packet.size());
  // A packet that an end does not take is lost, as on any wire.
  if (size > 0 && ::write(to, packet.data(), static_cast<std::size_t>(size)) < 0) return;
}

}  // namespace

TunnelEnd::TunnelEnd(const std::string& name, bool isTap)
    : device(::open("/dev/net/tun", O_RDWR | O_CLOEXEC | O_NONBLOCK)) {
  ifreq request{};
  request.ifr_flags = static_cast<short>((isTap ? IFF_TAP : IFF_TUN) | IFF_NO_PI);
  name.copy(request.ifr_name, IFNAMSIZ - 1);
  if (device.Get() >= 0 && ::ioctl(device.Get(), TUNSETIFF, &request) != 0) device = Files::FileDescriptor();
}

TunnelPair::TunnelPair(const TunnelEnd& near, const TunnelEnd& far)
    : near_(near.device.Get()),
      far_(far.device.Get()),
      stop_(::eventfd(0, EFD_CLOEXEC)),
      thread_([this] { Carry(); }) {}

TunnelPair::~TunnelPair() {
  eventfd_write(stop_.Get(), 1);
  thread_.join();
}

void TunnelPair::Carry() {
  std::array<pollfd, 3> watched = {pollfd{stop_.Get(), POLLIN, 0}, pollfd{near_, POLLIN, 0},
                                   pollfd{far_, POLLIN, 0}};
  while (::poll(watched.data(), watched.size(), -1) > 0 && (watched[0].revents & POLLIN) == 0) {
    if ((watched[1].revents & POLLIN) != 0) CarryOne(near_, far_);
    if ((watched[2].revents & POLLIN) != 0) CarryOne(far_, near_);
  }
}

}  // namespace TestSupport
