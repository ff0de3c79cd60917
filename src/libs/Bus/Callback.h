#pragma once

#include "libs/Bus/Result.h"
#include "libs/Bus/SdBus.h"

#include <exception>

namespace Bus {

// Runs work that gives a Result<>: what it throws becomes a failure.
template <class Work>
Result<> Caught(const Work& work) noexcept {
  try {
    return work();
  } catch (const std::exception& exception) {
    return Error::Failed(exception.what());
  } catch (...) {
    return Error::Failed("internal error");
  }
}

// The edge between the bus library's C callbacks and our functions, for all of them: nothing thrown inside
// passes it. Answers what the library wants, with the failure in `error` where that is not null.
template <class Work>
int CallbackResult(const Work& work, sd_bus_error* error = nullptr) noexcept {
  const Result<> result = Caught(work);
  if (result) return 1;
  const Error& failure = result.Failure();
  if (failure.name.empty()) return -failure.code;
  return sd_bus_error_set(error, failure.name.c_str(), failure.text.c_str());
}

}  // namespace Bus
