#pragma once

#include "libs/Warden_SDK/Challenge.h"
#include "libs/Warden_SDK/Credentials.h"
#include "libs/Warden_SDK/DigestAnswer.h"
#include "libs/Warden_SDK/MorvaneWarden.h"
#include "libs/Warden_SDK/NegotiateExchange.h"
#include "libs/Warden_SDK/Url.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Warden {

class CredentialProgram;

// Whom a request authenticates to.
struct Site {
  Url url;  // what is requested
  bool isGateway = false;
  std::uint32_t authentication = 1;  // as in MorvaneWardenRoute
};

// The authentication of one request: from the challenges of one answer to the next header line. One thread.
class Authentication {
 public:
  // `program` must outlive the object.
  explicit Authentication(const CredentialProgram& program) : program_(program) {}

  // For whoever is asked to log on.
  void SetGatewayName(std::string name) { gatewayName_ = std::move(name); }
  void SetPlace(QuestionPlace place) { place_ = std::move(place); }

  // The challenges of a request that was rejected at this target. A stored credential that it used is erased,
  // unless it used it in a digest of another target, whose rejection says nothing about the credential.
  void Challenged(std::vector<Challenge> challenges, std::string_view target);

  // Whether the header line is a digest, and of another target.
  [[nodiscard]] bool IsDigestOfAnotherTarget(std::string_view target) const;

  // Chooses a scheme and gets a credential where there are new challenges, which may block, and makes the
  // header line. MORVANE_WARDEN_ACTION_SEND, or why the request cannot go on.
  [[nodiscard]] MorvaneWardenAction Prepare(const Site& site);

  // Empty as long as there was no challenge.
  [[nodiscard]] const CredentialWire::Secret& HeaderLine() const { return headerLine_; }

  // The request was answered: a credential to be remembered is stored.
  void Accepted();

 private:
  enum class Scheme { None, Negotiate, Digest, Basic };

  void JudgeCredentials();
  void TakeBackCredentials();
  void DropCredentials();
  [[nodiscard]] bool SaysStale() const;
  [[nodiscard]] MorvaneWardenAction Choose(const Site& site);
  [[nodiscard]] bool TryNegotiate(const Site& site);
  [[nodiscard]] bool ChoosePasswordScheme(const Site& site);
  [[nodiscard]] MorvaneWardenAction ObtainCredentials(const Site& site);
  [[nodiscard]] MorvaneWardenAction AskOnce(const Site& site);
  [[nodiscard]] bool CredentialsFit() const;
  [[nodiscard]] bool MakeHeaderLine(const Site& site);
  [[nodiscard]] std::optional<CredentialWire::Secret> DigestValue(const Site& site,
                                                                  std::string_view password);
  void SetHeaderLine(std::string_view value);

  const CredentialProgram& program_;
  std::string gatewayName_;
  QuestionPlace place_;
  std::vector<Challenge> challenges_;
  bool pending_ = false;

  Scheme scheme_ = Scheme::None;
  std::unique_ptr<NegotiateExchange> negotiate_;
  bool negotiateFailed_ = false;
  std::optional<DigestChallenge> digest_;
  std::string digestTarget_;
  std::string countedNonce_;
  std::string clientNonce_;
  std::uint32_t nonceCount_ = 0;

  CredentialKey key_;
  std::optional<Credentials> credentials_;
  int tries_ = 0;
  bool wasRejected_ = false;
  std::string rejectedUserName_;
  CredentialWire::Secret headerLine_;
};

}  // namespace Warden
