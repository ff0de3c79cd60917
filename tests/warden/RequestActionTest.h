#pragma once

#include "support/ScriptedCredentials.h"
#include "warden/WardenLibrary.h"
#include "warden/WardenRequest.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

// The library and a credential program that replies what the test says; no server.
class RequestActionTest : public testing::Test {
 protected:
  static constexpr const wchar_t* kStore = L"https://store.example:8443/Example/Main";
  static constexpr const wchar_t* kBasic = L"WWW-Authenticate: Basic realm=\"Stores\"";
  static constexpr const wchar_t* kDigest =
      L"WWW-Authenticate: Digest realm=\"r\", qop=\"auth\", nonce=\"n\"";
  // "user:secret" and "user:better" in Base64.
  static constexpr const wchar_t* kSecretHeader = L"Authorization: Basic dXNlcjpzZWNyZXQ=";
  static constexpr const wchar_t* kBetterHeader = L"Authorization: Basic dXNlcjpiZXR0ZXI=";

  // Actions of a new request after a 401 with these lines.
  std::uint32_t ActionAfter401(const std::vector<std::wstring>& lines, const wchar_t* url = kStore) {
    TestSupport::WardenRequest request(library_, url);
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    request.Report(401, lines);
    return request.Prepare();
  }
  // The first pass, which is challenged, and the preparation of the second.
  static void PrepareAnswerTo(const wchar_t* challenge, TestSupport::WardenRequest& request) {
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
    request.Report(401, {challenge});
    EXPECT_EQ(request.Prepare(), MORVANE_WARDEN_ACTION_SEND);
  }
  std::string AllLogLines() {
    std::string all;
    for (const std::string& line : library_.Log()) all += line + "\n";
    return all;
  }

  TestSupport::WardenLibrary library_{TestSupport::ScriptedCredentials::kScript};
  TestSupport::ScriptedCredentials program_{library_.Folder()};
};
