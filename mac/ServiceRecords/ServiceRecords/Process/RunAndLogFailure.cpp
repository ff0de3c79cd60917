#include "Process/RunAndLogFailure.h"

#include "libs/Trace/SystemLog.h"

#include <exception>
#include <string>

namespace Agent {

void RunAndLogFailure(const char* what, const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& exception) {
    trace::SystemLog::Error(std::string(what) + " failed: " + exception.what());
  } catch (...) {
    trace::SystemLog::Error(std::string(what) + " failed");
  }
}

}  // namespace Agent
