#pragma once

#include "bus/AgentTalk.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Srctl {

// What became of a store of an opened file. All text is UTF-8 and may hold any character.
struct OpenedStore {
  std::string id;
  std::string name;
  std::string outcome;  // as the bus names it
  std::string reason;   // a sentence; empty where there is none
};

// One file that the agent opens, over a connection to the user's session bus of its own, so that the end of
// this object withdraws what is still asked. The bus starts the agent when it is not running. One thread.
class FileOpening {
 public:
  enum class End {
    Finished,     // Outcome() and Stores() say how
    Withdrawn,    // by SIGINT
    AgentLeft,    // without a word about the file
    TooMany,      // files are being opened already
    Unreachable,  // Problem() says why
  };

  FileOpening() = default;
  FileOpening(const FileOpening&) = delete;
  FileOpening& operator=(const FileOpening&) = delete;

  // Once. Waits for as long as the user takes. `terminal`: where he is to be asked, or -1: on the desktop
  // that this process has, or where the agent finds one. Blocks SIGINT in this thread, for good.
  [[nodiscard]] End Run(const std::string& absolutePath, int terminal);

  // As the bus names it.
  [[nodiscard]] const std::string& Outcome() const { return outcome_; }
  [[nodiscard]] const std::vector<OpenedStore>& Stores() const { return stores_; }
  // Where there are no stores: a sentence; may be empty.
  [[nodiscard]] const std::string& Reason() const { return reason_; }
  [[nodiscard]] const std::string& Problem() const { return talk_.Problem(); }

 private:
  [[nodiscard]] Bus::Result<> AddMatches();
  [[nodiscard]] Bus::Result<> Ask(const std::string& absolutePath, int terminal);
  void Finish(End end);

  void HandleReply(const Bus::Result<Bus::Message>& reply);
  void HandleFinished(const Bus::Message& signal);
  void HandleOwner(const Bus::Message& signal);

  std::string agent_;  // its unique name, once it has replied
  std::optional<std::uint64_t> id_;
  std::string outcome_;
  std::vector<OpenedStore> stores_;
  std::string reason_;
  End end_ = End::Withdrawn;
  AgentTalk talk_;
};

}  // namespace Srctl
