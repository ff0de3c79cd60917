#include "support/ChildProcess.h"
#include "support/ScriptedCredentials.h"
#include "warden/WardenLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

extern "C" std::uint32_t WardenActionInC(void);

namespace {

using testing::HasSubstr;
using testing::Not;
using TestSupport::ChildProcess;
using TestSupport::ScriptedCredentials;
using TestSupport::WardenLibrary;

class WardenInterfaceTest : public testing::Test {
 protected:
  WardenLibrary library_{ScriptedCredentials::kScript};
};

TEST_F(WardenInterfaceTest, ACProgramPreparesARequest) {
  EXPECT_EQ(WardenActionInC(), MORVANE_WARDEN_ACTION_SEND);
}

TEST_F(WardenInterfaceTest, OnlyItsOwnFunctionsAreVisible) {
  ChildProcess nm({"nm", "--dynamic", "--defined-only", "--format=posix", SR_WARDEN_LIBRARY});
  ASSERT_EQ(nm.Wait(), 0);
  std::istringstream symbols(nm.Output());
  int count = 0;
  for (std::string line; std::getline(symbols, line); ++count) {
    EXPECT_THAT(line, testing::StartsWith("MorvaneWarden_"));
  }
  EXPECT_EQ(count, 18);
}

TEST_F(WardenInterfaceTest, NeitherTheSecretServiceNorXmlIsLoadedWithIt) {
  ChildProcess objdump({"objdump", "-p", SR_WARDEN_LIBRARY});
  ASSERT_EQ(objdump.Wait(), 0);
  EXPECT_THAT(objdump.Output(), HasSubstr("NEEDED"));
  EXPECT_THAT(objdump.Output(), Not(HasSubstr("libsecret")));
  EXPECT_THAT(objdump.Output(), Not(HasSubstr("libxerces")));
}

TEST_F(WardenInterfaceTest, NothingIsMadeBeforeItIsInitialized) {
  MorvaneWardenConnection* connection = nullptr;
  EXPECT_EQ(library_.CreateConnection(L"Test", 0, 0, &connection), MORVANE_WARDEN_NOT_INITIALIZED);
  EXPECT_EQ(connection, nullptr);
  EXPECT_EQ(library_.Uninitialize(), MORVANE_WARDEN_NOT_INITIALIZED);
}

TEST_F(WardenInterfaceTest, ItsUsesAreCounted) {
  ASSERT_EQ(library_.Initialize(), MORVANE_WARDEN_OK);
  ASSERT_EQ(library_.Initialize(), MORVANE_WARDEN_OK);
  EXPECT_EQ(library_.Uninitialize(), MORVANE_WARDEN_OK);
  MorvaneWardenConnection* connection = nullptr;
  EXPECT_EQ(library_.CreateConnection(L"Test", 0, 0, &connection), MORVANE_WARDEN_OK);
  library_.DestroyConnection(connection);
  EXPECT_EQ(library_.Uninitialize(), MORVANE_WARDEN_OK);
  EXPECT_EQ(library_.CreateConnection(L"Test", 0, 0, &connection), MORVANE_WARDEN_NOT_INITIALIZED);
  EXPECT_EQ(library_.Uninitialize(), MORVANE_WARDEN_NOT_INITIALIZED);
}

TEST_F(WardenInterfaceTest, ReservedArgumentsMustBeZero) {
  ASSERT_EQ(library_.Initialize(), MORVANE_WARDEN_OK);
  MorvaneWardenConnection* connection = nullptr;
  EXPECT_EQ(library_.CreateConnection(L"Test", 1, 0, &connection), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(library_.CreateConnection(L"Test", 0, 1, &connection), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(library_.CreateConnection(nullptr, 0, 0, &connection), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(connection, nullptr);
  EXPECT_EQ(library_.Uninitialize(), MORVANE_WARDEN_OK);
}

TEST_F(WardenInterfaceTest, OnlyAGetOfAWebAddressIsARequest) {
  ASSERT_EQ(library_.Initialize(), MORVANE_WARDEN_OK);
  MorvaneWardenConnection* connection = nullptr;
  ASSERT_EQ(library_.CreateConnection(L"Test", 0, 0, &connection), MORVANE_WARDEN_OK);
  MorvaneWardenRequestContext* context = nullptr;
  EXPECT_EQ(library_.CreateRequestContext(connection, L"https://h/", 2, &context),
            MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(library_.CreateRequestContext(connection, L"file:///etc", 3, &context),
            MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(library_.CreateRequestContext(nullptr, L"https://h/", 3, &context), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(context, nullptr);
  library_.DestroyConnection(connection);
  library_.Uninitialize();
}

TEST_F(WardenInterfaceTest, WithoutAContextNothingIsToBeSent) {
  ASSERT_EQ(library_.Initialize(), MORVANE_WARDEN_OK);
  std::uint32_t action = MORVANE_WARDEN_ACTION_SEND;
  EXPECT_EQ(library_.Prepare2(nullptr, &action), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(action, static_cast<std::uint32_t>(MORVANE_WARDEN_ACTION_BAD_PARAMETER));
  const wchar_t* url = L"";
  EXPECT_EQ(library_.GetTranslatedUrl(nullptr, &url), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(url, nullptr);
  EXPECT_EQ(library_.SetAnsweringUrl(nullptr, L"https://h/"), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(library_.ReportHttpResponse(nullptr, 200, nullptr), MORVANE_WARDEN_BAD_PARAMETER);
  EXPECT_EQ(library_.DestroyContext(nullptr), MORVANE_WARDEN_OK);
  EXPECT_EQ(library_.DestroyConnection(nullptr), MORVANE_WARDEN_OK);
  library_.FreeHeaders(nullptr);
  library_.FreeTranslatedUrl(nullptr);
  library_.Uninitialize();
}

}  // namespace
