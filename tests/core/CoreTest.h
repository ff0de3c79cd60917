#pragma once

#include "fakes/CapturedTrace.h"
#include "fakes/FakeFactories.h"
#include "fakes/RecordedPublications.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace testsupport {

using Texts = std::vector<std::string>;
using Records = std::vector<TraceRecord>;

// A fresh start: nothing traced, saved or published yet, and the schemas in the current directory.
class CoreTest : public ::testing::Test {
 protected:
  CoreTest() {
    CapturedTrace::Clear();
    UserConfiguration().Clear();
    MachineConfiguration().Clear();
    RecordedPublications::Clear();
    std::filesystem::current_path(SR_SOURCE_DIR "/resources");
  }
};

}  // namespace testsupport
