#pragma once

#include "SRLib/SRRegistryConfig.h"
#include "core/RecordFiles.h"
#include "fakes/FakeConfigurator.h"
#include "fakes/FakeCriticalSections.h"
#include "support/CapturedSystemLog.h"
#include "support/CapturedTrace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace TestSupport {

using Texts = std::vector<std::string>;
using Records = std::vector<TraceRecord>;

// A configuration and logs of the test's own, and the schemas in the current directory.
class CoreTest : public ::testing::Test {
 protected:
  CoreTest() { std::filesystem::current_path(SR_SOURCE_DIR "/resources"); }

  [[nodiscard]] ServiceRecords::SRRegistryConfig Repository() const {
    return ServiceRecords::SRRegistryConfig(configuration_);
  }

  FakeConfigurator configuration_;  // the user's
  // What is written inside a critical section is marked.
  CapturedTrace trace_{InsideCriticalSection};
  CapturedSystemLog systemLog_;
};

}  // namespace TestSupport
