#pragma once

#include "Bus/BusObject.h"

#include <functional>
#include <string>

// Serves org.freedesktop.Application on a connection: how the desktop delivers opened files to the running
// agent. Main thread.
class ApplicationBusObject {
 public:
  // Receives the absolute path of each opened file (UTF-8).
  using FileOpenHandler = std::function<void(const std::string& path)>;

  explicit ApplicationBusObject(FileOpenHandler openFile) : openFile_(std::move(openFile)) {}

  // False when the connection does not take the object.
  [[nodiscard]] bool Serve(sd_bus& bus);

 private:
  static int Activate(sd_bus_message* call, void* self, sd_bus_error* error);
  static int Open(sd_bus_message* call, void* self, sd_bus_error* error);
  static int ActivateAction(sd_bus_message* call, void* self, sd_bus_error* error);
  static const sd_bus_vtable kMethods[];

  const FileOpenHandler openFile_;
  BusSlotPtr slot_;
};
