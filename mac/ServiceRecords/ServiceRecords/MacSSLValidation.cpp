#include "MacSSLValidation.h"

#include "DbgTrace.h"
#include "SRLib/Platform/Messages.h"
#include "SRLib/Platform/SSLValidationDetails.h"
#include "SRLib/Provider/Opening.h"
#include "libs/Address/SendingForm.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Text/HiddenCharacters.h"
#include "libs/Text/TextHelpers.h"
#include "libs/Transfer/HeadRequest.h"
#include "libs/Transfer/StreamErrorCode.h"

#include <cassert>
#include <memory>

namespace ServiceRecords {
namespace {

// 0 for what there is no sentence for.
int ReasonFor(const Transfer::PeerProblem& problem) {
  switch (problem.kind) {
    case Transfer::PeerProblem::Kind::None:
      return 0;
    case Transfer::PeerProblem::Kind::Expired:
      return util::kReasonExpired;
    case Transfer::PeerProblem::Kind::NotYetValid:
      return util::kReasonNotYetValid;
    case Transfer::PeerProblem::Kind::IssuerExpired:
      return util::kReasonIssuerExpired;
    case Transfer::PeerProblem::Kind::IssuerNotYetValid:
      return util::kReasonIssuerNotYetValid;
    case Transfer::PeerProblem::Kind::OtherHost:
      return problem.subject.empty() ? util::kReasonNoHost : util::kReasonOtherHost;
    case Transfer::PeerProblem::Kind::UnknownIssuer:
      return problem.subject.empty() ? util::kReasonNamelessIssuer : util::kReasonUnknownIssuer;
    case Transfer::PeerProblem::Kind::Revoked:
      return util::kReasonRevoked;
    case Transfer::PeerProblem::Kind::NoCommonProtocol:
      return util::kReasonNoCommonProtocol;
  }
  return 0;
}

}  // namespace

bool MacSSLValidation::PerformValidation(SSLValidationDetails& details) {
  assert(!downloading_);
  certificates_.clear();
  errorCode_ = Transfer::StreamErrorCode::kNone;
  problem_ = {};
  readError_.clear();
  const Address::SendingForm form = FormForSending(url_.GetSplitURL(), url_.GetPagelessURL());
  if (form.reading == Address::Reading::Same) DownloadHead(form.text);
  // Another server than the one to be shown: none of the store's other addresses may step in for that.
  if (form.reading == Address::Reading::Other) errorCode_ = Transfer::StreamErrorCode::kAnotherServer;
  if (certificates_.empty()) {
    ReportFailure(errorCode_, details);
    Explain(details);
    return false;
  }
  details.Organization = util::widen(certificates_.front().organizationName().value_or(""));
  details.Issuer = util::widen(certificates_.back().issuerName().value_or(""));
  return true;
}

void MacSSLValidation::DownloadHead(const std::string& url) {
  const std::unique_ptr<Transfer::HeadRequest> stream = Transfer::HeadRequest::Make(url);
  if (!stream) return;
  downloading_ = true;
  const CURLcode result = stream->Perform();
  if (result == CURLE_OK) {
    TakeChain(stream->TrustedChain());
  } else {
    errorCode_ =
        Transfer::StreamErrorCode::FromTransfer(result, stream->Transfer().Trust().ReceivedFatalAlert());
    readError_ = stream->Reason();
    ReportReadError(readError_);
  }
  problem_ = stream->Problem();
  downloading_ = false;
}

void MacSSLValidation::TakeChain(const STACK_OF(X509) * chain) {
  for (int i = 0; i < sk_X509_num(chain); ++i) {
    certificates_.push_back(MacCertificate::certificateWithCertificateRef(sk_X509_value(chain, i)));
  }
}

void MacSSLValidation::ReportReadError(const std::string& reason) const {
  CSRLog(2, "Read Stream failed with %@",
         reason.empty() ? "error number: " + std::to_string(errorCode_) : reason);
}

void MacSSLValidation::ReportFailure(std::int64_t errorCode, SSLValidationDetails& details) const {
  const std::string address = url_.GetPagelessURL();
  if (Transfer::StreamErrorCode::IsTlsFailure(errorCode)) {
    CSRLog(2, "Could not fetch certificates for URL %@", address);
    details.Result = SSLValidationDetails::kCertificatesNotFetched;
    details.AddError(Message(util::kMessageCertificatesNotFetched, url_.GetServer()));
  } else {
    CSRLog(2, "Failed to contact URL  %@", address);
    details.Result = SSLValidationDetails::kServerNotContacted;
    details.AddError(Message(util::kMessageServerNotContacted, url_.GetDisplayURL()));
  }
}

void MacSSLValidation::Explain(SSLValidationDetails& details) const {
  if (Termination::Requested()) Opening::NoteHindrance(Openings::Outcome::Ended);
  if (const int reason = ReasonFor(problem_); reason != 0) {
    // What the certificate says stands on a line of its own, which must be one.
    details.Reason = Message(reason, util::WithHiddenShown(util::widen(problem_.subject)));
  } else if (errorCode_ == Transfer::StreamErrorCode::kNone && !url_.IsSecure()) {
    details.Reason = Message(util::kReasonNoTls, {});
  }
  const std::string error = readError_.empty() ? "no trusted certificate" : readError_;
  details.TechnicalDetails =
      util::widen(url_.GetPagelessURL() + ": " + error + " (" + std::to_string(errorCode_) + ")");
}

void MacSSLValidationFactory::Init() {
  static MacSSLValidationFactory factory;
  c_Instance = &factory;
}

std::unique_ptr<SSLValidation> MacSSLValidationFactory::Create(const std::wstring& url) {
  return std::make_unique<MacSSLValidation>(url);
}

}  // namespace ServiceRecords
