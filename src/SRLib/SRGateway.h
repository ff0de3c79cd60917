#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <utility>

namespace ServiceRecords {

// An access gateway through which a store is reached from outside. Identified by its name, compared
// case-sensitively. The enumerations' values are stored in the configuration and must not change.
class SRGateway {
 public:
  enum class GatewayEdition : std::uint32_t { Standard = 0, Advanced = 1, Enterprise = 2 };
  enum class GatewayAuthentication : std::uint32_t {
    RSA = 0,
    None = 1,
    Domain = 2,
    DomainAndRSA = 3,
    SMS = 4,
    GatewayKnows = 5
  };
  enum class AGMode : std::uint32_t { NONE = 0, SG_RW = 1, FB_RW = 2, ENTCVPN_RW = 3 };

  [[nodiscard]] std::wstring GetName() const { return name_; }
  void SetName(std::wstring name) { name_ = std::move(name); }
  [[nodiscard]] std::wstring GetLocation() const { return location_; }
  void SetLocation(std::wstring location) { location_ = std::move(location); }
  // The name, not copied.
  [[nodiscard]] const std::wstring& Identity() const { return name_; }
  [[nodiscard]] GatewayEdition GetEdition() const { return edition_; }
  void SetEdition(GatewayEdition edition) { edition_ = edition; }
  [[nodiscard]] GatewayAuthentication GetAuthentication() const { return authentication_; }
  void SetAuthentication(GatewayAuthentication authentication) { authentication_ = authentication; }
  [[nodiscard]] AGMode GetAGMode() const { return agMode_; }
  void SetAGMode(AGMode mode) { agMode_ = mode; }
  [[nodiscard]] bool GetTrustedByUser() const { return trustedByUser_; }
  void SetTrustedByUser(bool trusted) { trustedByUser_ = trusted; }
  [[nodiscard]] bool GetTrustedByDS() const { return trustedByDS_; }
  void SetTrustedByDS(bool trusted) { trustedByDS_ = trusted; }
  [[nodiscard]] bool GetDefault() const { return default_; }
  void SetDefault(bool isDefault) { default_ = isDefault; }

  bool operator==(const SRGateway& other) const { return name_ == other.name_; }
  // Every field, not the name alone.
  [[nodiscard]] bool IsSameThroughout(const SRGateway& other) const;

  // True when the discovery service had confirmed this gateway and the list no longer names it.
  [[nodiscard]] bool TrustedButNotInList(const std::list<SRGateway>* list) const;

 private:
  std::wstring name_;
  GatewayEdition edition_ = GatewayEdition::Standard;
  GatewayAuthentication authentication_ = GatewayAuthentication::None;
  AGMode agMode_ = AGMode::NONE;
  std::wstring location_;
  bool trustedByUser_ = false;
  bool trustedByDS_ = false;
  bool default_ = false;
};

}  // namespace ServiceRecords
