#include "srctl/DoctorTest.h"

#include "support/LoopbackListener.h"

#include <filesystem>
#include <fstream>
#include <sstream>

using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::StoreText;

DoctorTest::DoctorTest() {
  agent_.Start();
}

void DoctorTest::WriteDocument(const TestSupport::WebServer& server, const std::string& id,
                               const std::string& content) {
  std::filesystem::create_directories(server.Document(id));
  std::ofstream(server.Document(id + "/discovery")) << content;
}

StoreText DoctorTest::WorkingStore(const std::string& id, const std::string& name) const {
  const StoreText store = Store(id, name);
  WriteDocument(server_, id, TestSupport::DiscoveryDocument({store}));
  return store;
}

StoreText DoctorTest::StoreAt(const std::string& address) const {
  StoreText store = Store("s1", "One");
  store.url = address + "/s1/discovery";
  return store;
}

std::string DoctorTest::NobodysAddress() {
  return "https://localhost:" + std::to_string(TestSupport::LoopbackListener().port);
}

std::string DoctorTest::Line(const SrctlRun& run, const std::string& check) {
  std::string found;
  std::istringstream output(run.output);
  for (std::string line; std::getline(output, line);) {
    if (line.find(": " + check + ": ") == std::string::npos) continue;
    if (!found.empty()) return {};
    found = line;
  }
  return found;
}

void DoctorTest::ExpectProblem(const std::string& line, const std::string& what, const std::string& next) {
  EXPECT_THAT(line, StartsWith("problem: "));
  EXPECT_THAT(line, HasSubstr(what));
  EXPECT_THAT(line, HasSubstr(" Next: " + next));
}
