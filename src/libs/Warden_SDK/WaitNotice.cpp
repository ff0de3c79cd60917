#include "libs/Warden_SDK/WaitNotice.h"

#include <atomic>

namespace Warden {
namespace {

std::atomic<MorvaneWardenWaitFunction> g_function{nullptr};

}  // namespace

void WaitNotice::SetFunction(MorvaneWardenWaitFunction function) {
  g_function = function;
}

WaitNotice::WaitNotice() : function_(g_function) {
  if (function_ != nullptr) function_(1);
}

WaitNotice::~WaitNotice() {
  if (function_ != nullptr) function_(0);
}

}  // namespace Warden
