#include "libs/Lifetime/UniqueHandle.h"
#include "support/ChildProcess.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

std::string CataloguesBeside(const fs::path& file) {
  return file.parent_path().parent_path() / "catalogues";
}

std::string OutputOf(const std::string& program, const std::string& searched) {
  TestSupport::ChildProcess process({"env", "--chdir=/", "PATH=" + searched, program});
  EXPECT_EQ(process.Wait(), 0);
  return process.Output();
}

TEST(TranslationsTest, LieBesideTheProgramHoweverItIsStarted) {
  const fs::path program = SR_CATALOGUE_PROGRAM;
  EXPECT_EQ(OutputOf(program, "/nonexistent"), CataloguesBeside(program));
  EXPECT_EQ(OutputOf(program.filename(), program.parent_path()), CataloguesBeside(program));
}

TEST(TranslationsTest, OfALibraryLieBesideIt) {
  const Lifetime::UniqueHandle<void, ::dlclose> library(::dlopen(SR_CATALOGUE_MODULE, RTLD_NOW));
  ASSERT_NE(library, nullptr) << ::dlerror();
  const auto folder = reinterpret_cast<const char* (*)()>(::dlsym(library.get(), "CatalogueFolder"));
  ASSERT_NE(folder, nullptr);
  EXPECT_EQ(folder(), CataloguesBeside(SR_CATALOGUE_MODULE));
}

}  // namespace
