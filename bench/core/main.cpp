// Measures what happens inside the agent's process, with the agent's own parts, in a home of its own.
#include "DbgTrace.h"
#include "libs/DomLib/XercesPlatform.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <future>
#include <thread>

namespace {

void LiveIn(const std::filesystem::path& home) {
  for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS"}) ::setenv(name, home.c_str(), 1);
  std::filesystem::current_path(SR_STAGE_DIR "/lib/servicerecords/Resources");
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  const TestSupport::TemporaryFolder home;
  LiveIn(home.Path());
  ServiceRecordUpdateLoggingFromPrefs();
  const DomLib::XercesPlatform xml;
  // A process with one thread has cheaper locks than the agent.
  std::promise<void> end;
  std::thread other([&end] { end.get_future().wait(); });
  benchmark::RunSpecifiedBenchmarks();
  end.set_value();
  other.join();
  return 0;
}
