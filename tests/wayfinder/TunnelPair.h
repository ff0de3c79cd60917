#pragma once

#include "libs/Files/FileDescriptor.h"

#include <string>
#include <thread>

namespace TestSupport {

// One end of a tunnel: a tun or tap link of the namespace in which it is made.
struct TunnelEnd {
  // Not open where the machine has none to give.
  TunnelEnd(const std::string& name, bool isTap);

  Files::FileDescriptor device;
};

// Carries packets between two ends until it goes.
class TunnelPair {
 public:
  TunnelPair(const TunnelEnd& near, const TunnelEnd& far);
  ~TunnelPair();

 private:
  void Carry();

  int near_;
  int far_;
  Files::FileDescriptor stop_;
  std::thread thread_;
};

}  // namespace TestSupport
