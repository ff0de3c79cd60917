#pragma once

#include "libs/Warden_SDK/MorvaneWarden.h"

namespace Warden {

// For as long as it lives, its thread waits for the credential program; the function that the program has set
// is told when that begins and ends. Any thread.
class WaitNotice {
 public:
  static void SetFunction(MorvaneWardenWaitFunction function);

  WaitNotice();
  ~WaitNotice();
  WaitNotice(const WaitNotice&) = delete;
  WaitNotice& operator=(const WaitNotice&) = delete;

 private:
  const MorvaneWardenWaitFunction function_;  // the same at the end, whatever was set meanwhile
};

}  // namespace Warden
