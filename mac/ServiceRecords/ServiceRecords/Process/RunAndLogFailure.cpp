#include "Process/RunAndLogFailure.h"

#include "libs/Trace/SystemLog.h"

#include <exception>
#include <string>

void RunAndLogFailure(const char* what, const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& exception) {
    SystemLog::Error(std::string(what) + " failed: " + exception.what());
  } catch (...) {
    SystemLog::Error(std::string(what) + " failed");
  }
}
