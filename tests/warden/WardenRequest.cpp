#include "warden/WardenRequest.h"

#include "MacSRHTTPRequest.h"
#include "warden/WardenLibrary.h"

#include <gtest/gtest.h>

namespace TestSupport {
namespace {

constexpr int kMostRequests = 50;

std::vector<std::wstring> Lines(std::wstring block) {
  std::vector<std::wstring> lines;
  for (std::size_t end = block.find(L"\r\n"); end != std::wstring::npos; end = block.find(L"\r\n")) {
    lines.push_back(block.substr(0, end));
    block.erase(0, end + 2);
  }
  return lines;
}

}  // namespace

WardenRequest::WardenRequest(WardenLibrary& library, const std::wstring& storeUrl) : library_(library) {
  EXPECT_EQ(library_.Initialize(), MORVANE_WARDEN_OK);
  EXPECT_EQ(library_.CreateConnection(L"Test", 0, 0, &connection_), MORVANE_WARDEN_OK);
  EXPECT_EQ(library_.CreateRequestContext(connection_, storeUrl.c_str(), 3, &context_), MORVANE_WARDEN_OK);
}

WardenRequest::~WardenRequest() {
  EXPECT_EQ(library_.DestroyContext(context_), MORVANE_WARDEN_OK);
  EXPECT_EQ(library_.DestroyConnection(connection_), MORVANE_WARDEN_OK);
  EXPECT_EQ(library_.Uninitialize(), MORVANE_WARDEN_OK);
}

MorvaneWardenStatus WardenRequest::ForceRoute(const TestRoute& route) {
  const MorvaneWardenRoute record{L"Gateway", route.location.c_str(), 0, route.authentication, route.mode};
  return library_.ForceRoute(context_, &record);
}

MorvaneWardenStatus WardenRequest::SetQuestions(const MorvaneWardenQuestions& questions) {
  return library_.SetQuestions(context_, &questions);
}

std::uint32_t WardenRequest::Prepare() {
  std::uint32_t action = 0;
  EXPECT_EQ(library_.Prepare2(context_, &action), MORVANE_WARDEN_OK);
  return action;
}

std::wstring WardenRequest::Url() {
  const wchar_t* url = nullptr;
  EXPECT_EQ(library_.GetTranslatedUrl(context_, &url), MORVANE_WARDEN_OK);
  std::wstring copy = url != nullptr ? url : L"";
  library_.FreeTranslatedUrl(url);
  return copy;
}

std::vector<std::wstring> WardenRequest::Headers() {
  const wchar_t* const* lines = nullptr;
  EXPECT_EQ(library_.GetHeaders(context_, &lines), MORVANE_WARDEN_OK);
  std::vector<std::wstring> copies;
  for (const wchar_t* const* line = lines; line != nullptr && *line != nullptr; ++line)
    copies.emplace_back(*line);
  library_.FreeHeaders(lines);
  return copies;
}

MorvaneWardenStatus WardenRequest::SetAnsweringUrl(const std::wstring& url) {
  return library_.SetAnsweringUrl(context_, url.c_str());
}

void WardenRequest::Report(std::int64_t status, const std::vector<std::wstring>& lines) {
  std::vector<const wchar_t*> pointers;
  for (const std::wstring& line : lines) pointers.push_back(line.c_str());
  pointers.push_back(nullptr);
  EXPECT_EQ(library_.ReportHttpResponse(context_, status, pointers.data()), MORVANE_WARDEN_OK);
}

std::uint32_t WardenRequest::Run() {
  for (std::uint32_t action = Prepare(); sent_ < kMostRequests; action = Prepare()) {
    if (action != MORVANE_WARDEN_ACTION_SEND) return action;
    lastHeaders_ = Headers();
    std::wstring block;
    for (const std::wstring& line : lastHeaders_) block += line + L"\r\n";
    ServiceRecords::MacSRHTTPRequest request(Url());
    ++sent_;
    const bool ok = request.SendHTTPRequest(block);
    const std::wstring answering = request.GetEffectiveURL();
    if (answering != Url()) {
      EXPECT_EQ(SetAnsweringUrl(answering), MORVANE_WARDEN_OK);
    }
    Report(request.GetStatus(), Lines(request.GetRawHeader()));
    if (ok) {
      body_ = request.GetBody();
      return MORVANE_WARDEN_ACTION_SEND;
    }
  }
  ADD_FAILURE() << "the requests do not come to an end";
  return 0;
}

}  // namespace TestSupport
