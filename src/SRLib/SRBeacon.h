#pragma once

#include <list>
#include <string>
#include <utility>

namespace ServiceRecords {

// An address whose reachability tells whether the machine is inside or outside a store's network.
// Identified by its location, compared case-sensitively.
class SRBeacon {
 public:
  [[nodiscard]] std::wstring GetLocation() const { return location_; }
  void SetLocation(std::wstring location) { location_ = std::move(location); }
  // The location, not copied.
  [[nodiscard]] const std::wstring& Identity() const { return location_; }
  [[nodiscard]] bool GetDSConfirmed() const { return dsConfirmed_; }
  void SetDSConfirmed(bool confirmed) { dsConfirmed_ = confirmed; }

  bool operator==(const SRBeacon& other) const { return location_ == other.location_; }
  // The mark too.
  [[nodiscard]] bool IsSameThroughout(const SRBeacon& other) const {
    return *this == other && dsConfirmed_ == other.dsConfirmed_;
  }

  // True when the discovery service had confirmed this beacon and the list no longer names it.
  [[nodiscard]] bool ConfirmedButNotInList(const std::list<SRBeacon>* list) const;

 private:
  std::wstring location_;
  bool dsConfirmed_ = false;
};

}  // namespace ServiceRecords
