#pragma once

#include "SRLib/Provider/Opening.h"
#include "libs/Files/EventFd.h"
#include "libs/Files/FileDescriptor.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace Agent {

class BackgroundTasks;

// The files that are being opened, each on a thread of its own. Main thread.
class FileOpenings {
 public:
  using Finished = std::function<void(const ServiceRecords::Opening& opening)>;

  struct Request {
    std::string path;
    Files::FileDescriptor terminal = {};  // on which to ask; closed when the opening has finished
    Display::Variables desktop = {};      // on which to ask otherwise
    bool isWithdrawable = false;
    Finished finished = nullptr;  // called on the main thread, once
  };

  // `handle` handles one file, on the file's thread; `finished` is called for every opening, before its own
  // one. `tasks` outlives this object.
  FileOpenings(BackgroundTasks& tasks, std::function<void(const std::string& path)> handle, Finished finished)
      : tasks_(tasks), handle_(std::move(handle)), finished_(std::move(finished)) {}

  // Returns the opening's number, which no other one has had. Throws std::system_error when there is no
  // descriptor to be had.
  std::uint64_t Start(Request request);
  // Nobody wants the answers to its questions any more. One that is not withdrawable, or has finished, is
  // left alone.
  void Withdraw(std::uint64_t id) const;

 private:
  // Shared with the thread that handles the file.
  struct OpenFile {
    Files::FileDescriptor terminal;
    std::optional<Files::EventFd> withdrawal;
    std::optional<ServiceRecords::Opening> opening;
  };
  struct Entry {
    std::shared_ptr<OpenFile> file;
    Finished finished;
  };

  void Finish(std::uint64_t id);

  BackgroundTasks& tasks_;
  const std::function<void(const std::string& path)> handle_;
  const Finished finished_;
  std::map<std::uint64_t, Entry> open_;
  std::uint64_t last_ = 0;
};

}  // namespace Agent
