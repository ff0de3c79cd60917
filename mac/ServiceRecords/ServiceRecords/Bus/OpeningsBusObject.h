#pragma once

#include "SRLib/Provider/ListChange.h"
#include "SRLib/Provider/Opening.h"
#include "libs/Bus/Connection.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Agent {

class FileOpenings;

// Serves com.morvane.ServiceRecords.Openings on a connection. Main thread.
class OpeningsBusObject {
 public:
  // Each opening that has not finished holds descriptors.
  static constexpr std::size_t kMostOpenings = 64;
  static constexpr std::size_t kMostOpeningsOfOneCaller = 16;

  // The connection and the openings outlive this object, which outlives every opening.
  OpeningsBusObject(Bus::Connection& bus, FileOpenings& openings) : bus_(bus), openings_(openings) {}

  [[nodiscard]] Bus::Result<> Serve();

  // Tells everybody what has changed in the list.
  void AnnounceChanges(const std::vector<ServiceRecords::ListChange>& changes);

 private:
  [[nodiscard]] Bus::Result<std::uint64_t> Open(const Bus::Caller& caller, const std::string& path,
                                                Bus::Options options);
  [[nodiscard]] bool HasRoomFor(const std::string& caller) const;
  void Tell(const ServiceRecords::Opening& opening);

  // The program for which a file is being opened; it may have left.
  struct Client {
    std::string name;
    Bus::PeerWatch watch;
  };

  Bus::Connection& bus_;
  FileOpenings& openings_;
  Bus::Slot object_;
  std::map<std::uint64_t, Client> clients_;  // by the opening
};

}  // namespace Agent
