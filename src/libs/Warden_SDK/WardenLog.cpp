#include "libs/Warden_SDK/WardenLog.h"

#include "libs/Text/LogText.h"
#include "libs/Text/TextHelpers.h"

#include <atomic>

namespace Warden::WardenLog {
namespace {

std::atomic<MorvaneWardenLogFunction> g_function{nullptr};

}  // namespace

void SetFunction(MorvaneWardenLogFunction function) {
  g_function = function;
}

void Write(int level, std::string_view message) {
  const MorvaneWardenLogFunction function = g_function;
  if (function != nullptr) function(level, util::widen(util::LogText::Line(message)).c_str());
}

}  // namespace Warden::WardenLog
