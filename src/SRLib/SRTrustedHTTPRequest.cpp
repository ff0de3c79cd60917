#include "SRLib/SRTrustedHTTPRequest.h"

#include "SRLib/Provider/Opening.h"
#include "SRLib/SRHTTPRequest.h"
#include "SRLib/SRHTTPRequestFactory.h"
#include "libs/Trace/Trace.h"

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace ServiceRecords {
namespace {

constexpr std::int64_t kStatusOK = 200;
constexpr std::wstring_view kLineEnd = L"\r\n";

// A handle of the authentication manager, with its function that ends it.
template <class Handle, class End>
std::unique_ptr<Handle, End> Owned(Handle* handle, End end) {
  return {handle, end};
}

// The library counts its uses, so those of several requests may overlap.
class LibraryUse {
 public:
  explicit LibraryUse(const WardenFunctions& warden) : warden_(warden) { warden_.Initialize(); }
  ~LibraryUse() { warden_.Uninitialize(); }
  LibraryUse(const LibraryUse&) = delete;
  LibraryUse& operator=(const LibraryUse&) = delete;

 private:
  const WardenFunctions& warden_;
};

// A block of header lines for a request. It may hold credentials, so it is wiped at its end, and takes its
// memory once, so that no earlier copy of it stays behind.
class HeaderBlock {
 public:
  explicit HeaderBlock(const wchar_t* const* lines) {
    constexpr std::wstring_view kContentType = L"Content-Type: text/xml\r\n";
    std::size_t size = kContentType.size();
    for (auto line = lines; line != nullptr && *line != nullptr; ++line) {
      size += std::wstring_view(*line).size() + kLineEnd.size();
    }
    text_.reserve(size);
    text_ += kContentType;
    for (auto line = lines; line != nullptr && *line != nullptr; ++line) text_.append(*line).append(kLineEnd);
  }
  ~HeaderBlock() { ::explicit_bzero(text_.data(), text_.size() * sizeof(wchar_t)); }
  HeaderBlock(const HeaderBlock&) = delete;
  HeaderBlock& operator=(const HeaderBlock&) = delete;

  [[nodiscard]] const std::wstring& Text() const { return text_; }

 private:
  std::wstring text_;
};

// The lines of a raw response header, each without its line end. False, and no lines, when the last one has
// no end.
bool SplitLines(std::wstring_view rawHeader, std::vector<std::wstring>& lines) {
  while (!rawHeader.empty()) {
    const std::size_t end = rawHeader.find(kLineEnd);
    if (end == std::wstring_view::npos) {
      lines.clear();
      return false;
    }
    lines.emplace_back(rawHeader.substr(0, end));
    rawHeader.remove_prefix(end + kLineEnd.size());
  }
  return true;
}

void Report(const WardenFunctions& warden, MorvaneWardenRequestContext* context, const SRHTTPRequest& request,
            const wchar_t* url) {
  std::vector<std::wstring> lines;
  if (!SplitLines(request.GetRawHeader(), lines)) SR_TRACE(2) << "Error extracting headers from " << url;
  std::vector<const wchar_t*> list;
  list.reserve(lines.size() + 1);
  for (const std::wstring& line : lines) list.push_back(line.c_str());
  list.push_back(nullptr);
  const std::wstring answering = request.GetEffectiveURL();
  if (answering != url) warden.SetAnsweringUrl(context, answering.c_str());
  warden.ReportHttpResponse(context, request.GetStatus(), list.data());
}

auto TranslatedUrl(const WardenFunctions& warden, MorvaneWardenRequestContext* context) {
  const wchar_t* url = nullptr;
  warden.GetTranslatedUrl(context, &url);
  return Owned(url, warden.FreeTranslatedUrl);
}

auto Headers(const WardenFunctions& warden, MorvaneWardenRequestContext* context) {
  const wchar_t* const* lines = nullptr;
  warden.GetHeaders(context, &lines);
  return Owned(lines, warden.FreeHeaders);
}

// Asked where everything else about the file is asked.
void SetQuestions(const WardenFunctions& warden, MorvaneWardenRequestContext* context,
                  const SRWardenRequest_Data& data) {
  const Opening* const opening = Opening::OfThisThread();
  const Opening::Origin origin = opening != nullptr ? opening->GetOrigin() : Opening::Origin();
  const std::vector<const char*> desktop = Display::PointersTo(origin.desktop);
  const MorvaneWardenQuestions questions{data.StoreName.c_str(), origin.terminalDescriptor,
                                         origin.withdrawalDescriptor, desktop.data()};
  warden.SetQuestions(context, &questions);
}

auto CreateContext(const WardenFunctions& warden, MorvaneWardenConnection* connection,
                   const SRWardenRequest_Data& data) {
  MorvaneWardenRequestContext* context = nullptr;
  warden.CreateRequestContext(connection, data.StoreURL.c_str(), MORVANE_WARDEN_REQUEST_GET, &context);
  auto owned = Owned(context, warden.DestroyContext);
  SetQuestions(warden, context, data);
  if (data.Route.GatewayLocation != nullptr) warden.ForceRoute(context, &data.Route);
  return owned;
}

auto CreateConnection(const WardenFunctions& warden) {
  MorvaneWardenConnection* connection = nullptr;
  warden.CreateConnection(L"ServiceRecord Trust", 0, 0, &connection);
  return Owned(connection, warden.DestroyConnection);
}

}  // namespace

// With a 200 whose text cannot be read the store was reached all the same, and the empty response is no
// discovery document.
std::int64_t SRTrustedHTTPRequest::SendPrepared(MorvaneWardenRequestContext* context,
                                                std::wstring& response) const {
  auto lines = Owned<const wchar_t* const>(nullptr, warden_.FreeHeaders);  // freed after the URL
  const auto url = TranslatedUrl(warden_, context);
  lines = Headers(warden_, context);
  const std::wstring address = url ? url.get() : L"";
  const std::unique_ptr<SRHTTPRequest> request = requests_.Create(address);
  request->SendHTTPRequest(HeaderBlock(lines.get()).Text());
  response = request->GetBody();
  Report(warden_, context, *request, address.c_str());
  return request->GetStatus();
}

bool SRTrustedHTTPRequest::MakeRequest(const SRWardenRequest_Data& data, std::wstring& response,
                                       bool& canceled) const {
  // The log's own name for this, whatever the compiler makes of the signature.
  constexpr const char* kSignature =
      "static bool ServiceRecords::SRTrustedHTTPRequest::MakeRequest(const "
      "ServiceRecords::SRWardenRequest_Data&, std::wstring&, bool&)";
  SR_TRACE(0) << "[+] " << kSignature;
  response.clear();
  canceled = false;
  bool succeeded = false;
  {
    const LibraryUse library(warden_);
    const auto connection = CreateConnection(warden_);
    const auto context = CreateContext(warden_, connection.get(), data);
    while (!succeeded) {
      std::uint32_t action = 0;
      warden_.Prepare2(context.get(), &action);
      if (action != MORVANE_WARDEN_ACTION_SEND) {
        SR_TRACE(2) << "[*] " << kSignature << ": MorvaneWarden_Prepare2 returned error " << action;
        canceled = action == MORVANE_WARDEN_ACTION_CANCELLED;
        break;
      }
      succeeded = SendPrepared(context.get(), response) == kStatusOK;
    }
  }
  SR_TRACE(0) << "[-] " << kSignature;
  return succeeded;
}

}  // namespace ServiceRecords
