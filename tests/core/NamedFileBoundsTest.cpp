#include "core/BoundsTest.h"
#include "support/TemporaryFolder.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace {

using namespace ServiceRecords;
using namespace TestSupport;
namespace fs = std::filesystem;

// The ways in which a document can name a file.
enum class Way { Schema, ExternalSubset, Entity, ParameterEntity };

std::wstring Naming(Way way, const std::wstring& name) {
  switch (way) {
    case Way::Schema:
      return L"<Services xmlns='urn:other' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
             L"xsi:schemaLocation='urn:other " +
             name + L"'/>";
    case Way::ExternalSubset:
      return L"<!DOCTYPE Services SYSTEM '" + name + L"'><Services/>";
    case Way::Entity:
      return L"<!DOCTYPE Services [<!ENTITY e SYSTEM '" + name + L"'>]><Services>&e;</Services>";
    case Way::ParameterEntity:
      return L"<!DOCTYPE Services [<!ENTITY % e SYSTEM '" + name + L"'>%e;]><Services/>";
  }
  return {};
}

std::string NameOf(Way way) {
  constexpr const char* kNames[] = {"Schema", "ExternalSubset", "Entity", "ParameterEntity"};
  return kNames[static_cast<std::size_t>(way)];
}

class NamedFileBoundsTest : public BoundsTest, public ::testing::WithParamInterface<Way> {
 protected:
  NamedFileBoundsTest() { fs::current_path(folder_.Path()); }
  ~NamedFileBoundsTest() override { fs::current_path("/"); }

  void ExpectFileRefused(const std::string& name, const std::string& reason) {
    ExpectRefused(Naming(GetParam(), std::wstring(name.begin(), name.end())),
                  "the document names the file \"" + name + "\", which " + reason);
  }

  const TemporaryFolder folder_;
  const std::string outside_ = "does not lie below the current directory";
  const std::string link_ = "is reached through a link";
  const std::string irregular_ = "is not a regular file";
};

TEST_P(NamedFileBoundsTest, ANamedPipeIsRefusedWithoutWaitingForAWriter) {
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  ExpectFileRefused("pipe", irregular_);
}

TEST_P(NamedFileBoundsTest, AFolderIsRefused) {
  fs::create_directory("folder");
  ExpectFileRefused("folder", irregular_);
}

TEST_P(NamedFileBoundsTest, ADeviceIsRefusedByItsPathAndThroughALink) {
  ExpectFileRefused("/dev/zero", outside_);
  fs::create_symlink("/dev/zero", "zero");
  ExpectFileRefused("zero", link_);
}

TEST_P(NamedFileBoundsTest, ALinkIsRefusedAlsoOnTheWay) {
  fs::create_directory("real");
  std::ofstream("real/file") << "";
  fs::create_symlink("real/file", "link");
  fs::create_directory_symlink("real", "way");
  ExpectFileRefused("link", link_);
  ExpectFileRefused("way/file", link_);
}

TEST_P(NamedFileBoundsTest, AnAbsolutePathIsRefusedEvenBelowTheCurrentDirectory) {
  std::ofstream("file") << "";
  ExpectFileRefused((folder_.Path() / "file").string(), outside_);
}

TEST_P(NamedFileBoundsTest, APathUpwardsIsRefusedEvenWhenItComesBack) {
  fs::create_directory("inner");
  std::ofstream("file") << "";
  ExpectFileRefused("../file", outside_);
  ExpectFileRefused("inner/../file", outside_);
}

TEST_P(NamedFileBoundsTest, AFileOverOneMebibyteIsRefused) {
  std::ofstream("large") << std::string(kMiB + 1, ' ');
  ExpectFileRefused("large", "is larger than 1 MiB");
}

TEST_P(NamedFileBoundsTest, AFileOfOneMebibyteBelowTheCurrentDirectoryIsRead) {
  fs::create_directory("inner");
  const std::string schema =
      "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:other'>"
      "<xs:element name='Services'/></xs:schema>";
  const std::string content = GetParam() == Way::Schema ? schema : "";
  std::ofstream("inner/file") << content << std::string(kMiB - content.size(), ' ');
  ExpectRead(Naming(GetParam(), L"./inner//file"));
}

INSTANTIATE_TEST_SUITE_P(Ways, NamedFileBoundsTest,
                         ::testing::Values(Way::Schema, Way::ExternalSubset, Way::Entity,
                                           Way::ParameterEntity),
                         [](const auto& tested) { return NameOf(tested.param); });

// The program's own schema files, as a package manager may lay them out.
class LinkedSchemasTest : public BoundsTest {
 protected:
  LinkedSchemasTest() {
    for (const char* schema : {"servicerecord.xsd", "discoverydocument.xsd"})
      fs::create_symlink(fs::path(SR_SOURCE_DIR) / "resources" / schema, folder_.Path() / schema);
    fs::current_path(folder_.Path());
  }
  ~LinkedSchemasTest() override { fs::current_path("/"); }

  template <class Parser>
  void ExpectValidated(const std::wstring& valid, const std::wstring& invalid) {
    EXPECT_TRUE(Parse<Parser>(valid));
    EXPECT_EQ(ReadingRecords(), Records{});
    EXPECT_TRUE(Parse<Parser>(invalid));
    EXPECT_EQ(trace_.RecordsStartingWith("Errors Detected").size(), 1U);
  }

  const TemporaryFolder folder_;
};

TEST_F(LinkedSchemasTest, BothKindsOfDocumentAreValidated) {
  const std::wstring inNamespace = InServiceRecordNamespace();
  ExpectValidated<SRDocParser>(ServiceRecord(Service(L"s")), ServiceRecord(Service(L"s", L"<Unheard/>")));
  ExpectValidated<DiscoveryDocParser>(DiscoveryDocument(Service(L"s", L"", inNamespace)),
                                      DiscoveryDocument(Service(L"s", L"<Unheard/>", inNamespace)));
}

TEST_F(LinkedSchemasTest, ALinkThatADocumentNamesIsRefusedAllTheSame) {
  fs::create_symlink("servicerecord.xsd", "other.xsd");
  ExpectRefused(Naming(Way::Schema, L"other.xsd"),
                "the document names the file \"other.xsd\", which is reached through a link");
}

class MissingFileTest : public BoundsTest {};

TEST_F(MissingFileTest, ASchemaMayImportANamespaceWithoutAPlace) {
  const TemporaryFolder folder;
  fs::current_path(folder.Path());
  std::ofstream("other.xsd")
      << "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace="
         "'urn:other'><xs:import namespace='x'/><xs:element name='Services'/></xs:schema>";
  ExpectRead(Naming(Way::Schema, L"other.xsd"));
  EXPECT_EQ(ReadingRecords(), Records{});
  fs::current_path("/");
}

TEST_F(MissingFileTest, ADocumentWhoseSchemaIsMissingIsReadAllTheSame) {
  const TemporaryFolder folder;
  fs::current_path(folder.Path());
  ExpectRead(ServiceRecord(Service(L"s")));
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
  fs::current_path("/");
}

TEST_F(MissingFileTest, ANameOnTheNetworkIsAMissingFile) {
  std::wstring text = ServiceRecord(Service(L"s"));
  text.replace(text.find(L"serviceRecord.xsd"), 17, L"http://127.0.0.1:9/other.xsd");
  ExpectRead(text);
  EXPECT_EQ(Ids(stores_), (Wide{L"s"}));
}

TEST_F(MissingFileTest, AnEmptyNameIsTheFolderItself) {
  const std::string refusal = "the document names the file \"\", which is not a regular file";
  ExpectRefused(L"<!DOCTYPE Services SYSTEM ''><Services/>", refusal);
  ExpectRefused(Declaring(L"<!ENTITY % e SYSTEM ''>%e;"), refusal);
}

}  // namespace
