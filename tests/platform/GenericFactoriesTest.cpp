#include "Files/PreferenceFile.h"
#include "GenericFactories.h"
#include "MacConfiguration.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

TEST(GenericFactoriesTest, ThereIsOneRegistryForAllThreads) {
  std::vector<CGenericFactories*> seen(8);
  {
    std::vector<std::jthread> threads;
    for (auto& instance : seen)
      threads.emplace_back([&instance] { instance = &CGenericFactories::Instance(); });
  }
  for (const auto* instance : seen) EXPECT_EQ(instance, &CGenericFactories::Instance());
}

TEST(GenericFactoriesTest, CriticalSectionsAreReadyForUseAndTheCallers) {
  const auto first = CGenericFactories::Instance().CriticalSections().ManufactureCriticalSection();
  const auto second = CGenericFactories::Instance().CriticalSections().ManufactureCriticalSection();
  EXPECT_NE(first, second);
  EXPECT_TRUE(first->Enter());
  EXPECT_TRUE(second->Enter());
  EXPECT_TRUE(first->Leave());
  EXPECT_TRUE(second->Leave());
}

TEST(GenericFactoriesTest, TheConfigurationsAreTheUsersAndTheMachines) {
  auto& factories = CGenericFactories::Instance();
  factories.UserConfiguration().SetString(L"Scope", L"the user's");
  factories.MachineConfiguration().SetString(L"Scope", L"the machine's");
  EXPECT_NE(TestSupport::ReadFile(Agent::preferenceFile(true)).find("the user's"), std::string::npos);
  EXPECT_NE(TestSupport::ReadFile(Agent::preferenceFile(false)).find("the machine's"), std::string::npos);
}

}  // namespace
