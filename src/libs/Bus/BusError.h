#pragma once

#include "libs/Bus/SdBus.h"

#include <cstring>
#include <string>

// What a call over the bus got instead of an answer.
class BusError {
 public:
  BusError() = default;
  ~BusError() { sd_bus_error_free(&error_); }
  BusError(const BusError&) = delete;
  BusError& operator=(const BusError&) = delete;

  sd_bus_error* Get() { return &error_; }
  // `status`: the negative error code that the call returned.
  [[nodiscard]] std::string Text(int status) const {
    return error_.message != nullptr ? error_.message : std::strerror(-status);
  }

 private:
  sd_bus_error error_ = SD_BUS_ERROR_NULL;
};
