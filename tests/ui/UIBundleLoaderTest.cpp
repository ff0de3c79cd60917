#include "Dialogs/UIBundleLoader.h"
#include "support/CapturedSystemLog.h"
#include "ui/RecordingUI.h"
#include "ui/TestBundle.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kDescriptor = 77;

const SRUIProtocol* PrincipalClassIn(const std::filesystem::path& plugIns) {
  return Agent::UIBundleLoader(plugIns, {SRUI_PROTOCOL_VERSION, kDescriptor, -1, -1, nullptr})
      .PrincipalClass("caller()");
}

class UIBundleLoaderTest : public ::testing::Test {
 protected:
  // The whole of the one line expected for a bundle that is not what it should be.
  [[nodiscard]] std::string NotConforming() const {
    return "caller() - " + bundle_.Path().string() + " does not conform to protocol";
  }

  [[nodiscard]] bool ModuleIsLoaded() const {
    void* module = ::dlopen(bundle_.Module().c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (module != nullptr) ::dlclose(module);
    return module != nullptr;
  }

  TestSupport::CapturedSystemLog systemLog_;
  TestBundle bundle_;
};

TEST_F(UIBundleLoaderTest, LoadsAModuleThatConformsToTheProtocol) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_RECORDING_UI);

  const SRUIProtocol* entryPoints = PrincipalClassIn(bundle_.PlugInsFolder());

  ASSERT_NE(entryPoints, nullptr);
  EXPECT_EQ(entryPoints->version, SRUI_PROTOCOL_VERSION);
  EXPECT_EQ(entryPoints->addStore("details"), 0);
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(UIBundleLoaderTest, HandsTheTerminationDescriptorToTheModule) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_RECORDING_UI);
  ASSERT_NE(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);

  void* module = ::dlopen(bundle_.Module().c_str(), RTLD_NOW | RTLD_NOLOAD);
  ASSERT_NE(module, nullptr);
  const auto lastDialog = reinterpret_cast<decltype(&LastDialog)>(::dlsym(module, "LastDialog"));
  ASSERT_NE(lastDialog, nullptr);
  EXPECT_EQ(lastDialog()->terminationDescriptor, kDescriptor);
  ::dlclose(module);
}

TEST_F(UIBundleLoaderTest, KeepsTheModuleLoadedAndAnswersWithTheSameEntryPoints) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_RECORDING_UI);

  const SRUIProtocol* first = PrincipalClassIn(bundle_.PlugInsFolder());

  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(ModuleIsLoaded());
  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), first);
}

TEST_F(UIBundleLoaderTest, LooksAfreshAtEveryCall) {
  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_RECORDING_UI);
  EXPECT_NE(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  std::filesystem::remove_all(bundle_.Path());
  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
}

TEST_F(UIBundleLoaderTest, ReportsThatThereIsNoPath) {
  EXPECT_EQ(PrincipalClassIn({}), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(),
              ElementsAre("caller() - Failed to create the path for the ServiceRecordUI bundle"));
}

TEST_F(UIBundleLoaderTest, ReportsAMissingBundle) {
  std::filesystem::remove_all(bundle_.Path());

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(),
              ElementsAre("caller() - Could not load the bundle from " + bundle_.Path().string()));
}

TEST_F(UIBundleLoaderTest, ReportsABundleWithoutADescription) {
  bundle_.AddModule(SR_RECORDING_UI);

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(),
              ElementsAre("caller() - Could not load the bundle from " + bundle_.Path().string()));
}

TEST_F(UIBundleLoaderTest, DoesNotLoadAModuleThatDeclaresAnotherProtocol) {
  bundle_.Describe("OtherProtocol");
  bundle_.AddModule(SR_RECORDING_UI);

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(NotConforming()));
  EXPECT_FALSE(ModuleIsLoaded());
}

TEST_F(UIBundleLoaderTest, PassesOverAMissingModuleInSilence) {
  bundle_.Describe("SRUIProtocol");

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(UIBundleLoaderTest, PassesOverAFileThatIsNoModuleInSilence) {
  bundle_.Describe("SRUIProtocol");
  std::ofstream(bundle_.Module()) << "not a module";

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
}

TEST_F(UIBundleLoaderTest, ReportsAModuleWithoutAPrincipalClass) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_UNRELATED_MODULE);

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(NotConforming()));
}

TEST_F(UIBundleLoaderTest, ReportsAModuleThatRefusesTheHost) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_REFUSING_UI);

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(NotConforming()));
}

TEST_F(UIBundleLoaderTest, ReportsAModuleThatLacksOneOfTheEntryPoints) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_INCOMPLETE_UI);

  for (const char* missing :
       {"addStore", "replaceStore", "errorMessage", "SRStoreDetailsViewWithDetailsDictionary"}) {
    ::setenv("INCOMPLETE_UI_WITHOUT", missing, 1);
    EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr) << missing;
    EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(NotConforming())) << missing;
  }
  ::unsetenv("INCOMPLETE_UI_WITHOUT");
  EXPECT_NE(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
}

TEST_F(UIBundleLoaderTest, ReportsAnotherProtocolEvenOfAModuleThatDoesNotLoad) {
  bundle_.Describe("OtherProtocol");
  std::ofstream(bundle_.Module()) << "not a module";

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(), ElementsAre(NotConforming()));
}

TEST_F(UIBundleLoaderTest, LoadsNothingWhenTheModuleHasNoAbsolutePath) {
  bundle_.Describe("SRUIProtocol");
  bundle_.AddModule(SR_RECORDING_UI);
  const std::filesystem::path before = std::filesystem::current_path();
  const std::filesystem::path removed = bundle_.PlugInsFolder() / "removed";
  std::filesystem::create_directory(removed);
  std::filesystem::current_path(removed);
  std::filesystem::remove(removed);

  EXPECT_EQ(PrincipalClassIn(".."), nullptr);
  EXPECT_THAT(systemLog_.TakeLines(), IsEmpty());
  std::filesystem::current_path(before);
}

TEST_F(UIBundleLoaderTest, LoadsNothingFromOutsideTheBundle) {
  std::filesystem::copy_file(SR_RECORDING_UI, bundle_.PlugInsFolder() / "Outside.so");
  std::ofstream(bundle_.File("Info.plist"))
      << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
         "<key>CFBundleExecutable</key><string>../Outside.so</string>"
         "<key>SRConformsToProtocol</key><string>SRUIProtocol</string></dict></plist>\n";

  EXPECT_EQ(PrincipalClassIn(bundle_.PlugInsFolder()), nullptr);
}

}  // namespace
