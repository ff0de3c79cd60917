#pragma once

#include "libs/Bus/Connection.h"

#include <functional>
#include <string>

namespace Agent {

// Serves org.freedesktop.Application on a connection: how the desktop delivers opened files to the running
// agent. Main thread.
class ApplicationBusObject {
 public:
  // Receives the absolute path of each opened file (UTF-8).
  using FileOpenHandler = std::function<void(const std::string& path)>;

  explicit ApplicationBusObject(FileOpenHandler openFile) : openFile_(std::move(openFile)) {}

  [[nodiscard]] Bus::Result<> Serve(Bus::Connection& bus);

 private:
  void Open(const std::vector<std::string>& uris) const;

  const FileOpenHandler openFile_;
  Bus::Slot object_;
};

}  // namespace Agent
