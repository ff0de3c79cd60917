#include "srctl/SrctlTest.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using TestSupport::DiscoveryDocument;
using TestSupport::ServiceRecordDocument;

namespace {

class SrctlDiscover : public SrctlTest {
 protected:
  SrctlDiscover() { agent_.Start(); }

  void ExpectRefusal(const SrctlRun& run, const std::string& reason) {
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_THAT(run.errors, HasSubstr(reason));
    EXPECT_THAT(StoreIDs(), IsEmpty());
  }
};

TEST_F(SrctlDiscover, HandsOverTheStoresOfAFile) {
  const auto file = agent_.Write("d.xml", DiscoveryDocument({Store("s2", "Two"), Store("s1", "Ünö")}));
  const SrctlRun run = Srctl({"discover", file.string()});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "Handed over the store \"s1\" (Ünö).\nHanded over the store \"s2\" (Two).\n");
  EXPECT_THAT(run.errors, IsEmpty());
  EXPECT_THAT(StoreIDs(), ElementsAre("s1", "s2"));
  EXPECT_THAT(agent_.Dialogs(), IsEmpty());
}

TEST_F(SrctlDiscover, FindsAFileRelativeToItsOwnFolder) {
  const auto file = agent_.Write("records/d.xml", DiscoveryDocument({Store("s1", "One")}));
  EXPECT_EQ(Srctl({"discover", "d.xml"}, {.folder = file.parent_path().string()}).status, 0);
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(SrctlDiscover, ReadsADashFromStandardInput) {
  const SrctlRun run = Srctl({"discover", "-"}, {.input = DiscoveryDocument({Store("s1", "One")})});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
}

TEST_F(SrctlDiscover, HandsOverWhatTheSchemaForbidsButTheAgentReads) {
  std::string document = DiscoveryDocument({Store("s1", "One")});
  const std::string edition = " Edition=\"Enterprise\"";
  document.replace(document.find(edition), edition.size(), " Edition=\"Unheard-of\" Colour=\"green\"");
  const SrctlRun run = Srctl({"discover", "-"}, {.input = document});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_THAT(StoreIDs(), ElementsAre("s1"));
  EXPECT_THAT(run.errors, AllOf(StartsWith("srctl: The document breaks its schema. "),
                                HasSubstr("\n  standard input, line "), HasSubstr("'Unheard-of'"),
                                HasSubstr("'Colour'")));
}

TEST_F(SrctlDiscover, RefusesWhatBreaksOffBehindACompleteStore) {
  std::string document = DiscoveryDocument({Store("s1", "One")});
  document.erase(document.find("</Discovery>"));
  const std::string file = agent_.Write("d.xml", document).string();
  ExpectRefusal(Srctl({"discover", file}), "The document was not handed over: " + file + ", line ");
}

TEST_F(SrctlDiscover, SaysWhereADocumentBreaksOffInsideAFurtherStore) {
  std::string document = DiscoveryDocument({Store("s1", "One"), Store("s2", "Two")});
  document.erase(document.find("<Name>Two"));
  const std::string file = agent_.Write("d.xml", document).string();
  ExpectRefusal(Srctl({"discover", file}), "The document was not handed over: " + file + ", line ");
}

TEST_F(SrctlDiscover, SaysWhatADocumentOfNeitherKindIs) {
  std::string document = ServiceRecordDocument({Store("s1", "One")});
  for (std::size_t at = 0; (at = document.find("Services", at)) != std::string::npos; ++at)
    document.replace(at, 8, "discovery");
  ExpectRefusal(
      Srctl({"discover", "-"}, {.input = document}),
      "not handed over: its root element is discovery; that of a service record is Services, that of a "
      "discovery document Discovery.");
}

TEST_F(SrctlDiscover, KeepsControlsOfADocumentAwayFromTheTerminal) {
  const SrctlRun run =
      Srctl({"discover", "-"}, {.input = DiscoveryDocument({Store("s1", "A&#x9B;31mB&#10;C")})});
  EXPECT_EQ(run.output, "Handed over the store \"s1\" (A\uFFFD31mB\uFFFDC).\n");
}

TEST_F(SrctlDiscover, RefusesAServiceRecord) {
  ExpectRefusal(Srctl({"discover", "-"}, {.input = ServiceRecordDocument({Store("s1", "One")})}),
                "it is a service record. Have it opened");
}

TEST_F(SrctlDiscover, RefusesGarbageAndNothing) {
  ExpectRefusal(Srctl({"discover", "-"}, {.input = "garbage"}), "The document was not handed over");
  ExpectRefusal(Srctl({"discover", "-"}), "The document was not handed over");
  ExpectRefusal(Srctl({"discover", agent_.Write("d.xml", "<Discovery>").string()}),
                "The document was not handed over");
}

TEST_F(SrctlDiscover, RefusesADocumentWithoutACompleteStore) {
  ExpectRefusal(Srctl({"discover", "-"}, {.input = DiscoveryDocument({})}), "describes no complete store");
  ExpectRefusal(Srctl({"discover", "-"}, {.input = "<Other/>"}), "its root element is Other");
}

TEST_F(SrctlDiscover, RefusesTextOfAnotherEncoding) {
  std::string document = DiscoveryDocument({Store("s1", "Name")});
  document.replace(document.find("Name"), 1, "\xC4");
  ExpectRefusal(Srctl({"discover", "-"}, {.input = document}), "it is not UTF-8 text");
}

TEST_F(SrctlDiscover, RefusesADocumentThatIsTooLargeWithoutReadingOn) {
  ExpectRefusal(Srctl({"discover", "/dev/zero"}), "larger than a document may be: 16 MiB");
}

TEST_F(SrctlDiscover, RefusesWhatIsNoReadableFile) {
  ExpectRefusal(Srctl({"discover", "/nowhere/d.xml"}), "\"/nowhere/d.xml\" cannot be read");
  ExpectRefusal(Srctl({"discover", ""}), "\"\" cannot be read");
  ExpectRefusal(Srctl({"discover", agent_.Home().string()}), "is not a file that holds a document");
}

}  // namespace
