#pragma once

#include "libs/Bus/Connection.h"

#include <functional>
#include <string>

namespace Agent {

// Serves org.freedesktop.Application on a connection: how the desktop delivers opened files to the running
// agent. Main thread.
class ApplicationBusObject {
 public:
  // Receives the absolute path of a file.
  using FileHandler = std::function<void(const std::string& path)>;

  // `openFile` receives each opened file whose path is UTF-8, `refuse` each other one.
  ApplicationBusObject(FileHandler openFile, FileHandler refuse)
      : openFile_(std::move(openFile)), refuse_(std::move(refuse)) {}

  [[nodiscard]] Bus::Result<> Serve(Bus::Connection& bus);

 private:
  void Open(const std::vector<std::string>& uris) const;

  const FileHandler openFile_;
  const FileHandler refuse_;
  Bus::Slot object_;
};

}  // namespace Agent
