#include "srctl/DoctorTest.h"

#include <filesystem>
#include <sstream>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using TestSupport::StoreText;
using TestSupport::TestAuthority;
using TestSupport::WebServer;

namespace {

class DoctorOfDocuments : public DoctorTest {
 protected:
  // What is said about the discovery document of a store whose server does this.
  [[nodiscard]] std::string DocumentLine(const std::string& directives, int status) {
    const WebServer other(TestAuthority::Shared().TlsServerBlock("good", directives));
    GiveStores({StoreAt(other.Address("https"))});
    const SrctlRun run = Srctl({"doctor"});
    EXPECT_EQ(run.status, status) << run.output;
    EXPECT_THAT(StoreLine(run, "server"), StartsWith("ok: "));
    return StoreLine(run, "discovery document");
  }

  // The same program, installed without what belongs to it.
  [[nodiscard]] SrctlRun SrctlWithoutSchemas(const std::vector<std::string>& arguments) {
    const auto program = agent_.Write("incomplete/bin/srctl", "");
    std::filesystem::copy_file(SR_STAGE_DIR "/bin/srctl", program,
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    std::vector<std::string> command{program.string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    TestSupport::ChildProcess srctl(command, agent_.Environment());
    const int status = srctl.Wait();
    return {status, srctl.Output(), ""};
  }
};

TEST_F(DoctorOfDocuments, NotesThatTheServerAsksForALogOn) {
  EXPECT_THAT(DocumentLine("location / { return 401; }", 0),
              AllOf(StartsWith("note: "), HasSubstr("The server asks for a log-on")));
}

TEST_F(DoctorOfDocuments, SeesThatThereIsNoDocument) {
  ExpectProblem(DocumentLine("", 1), "The server answers with the status 404.", "Ask your administrator");
}

TEST_F(DoctorOfDocuments, SeesThatTheDocumentIsSomethingElse) {
  ExpectProblem(DocumentLine("location / { return 200 '<html>Welcome</html>'; }", 1),
                "What the server sends is no discovery document.", "Ask your administrator");
}

TEST_F(DoctorOfDocuments, SeesThatTheDocumentIsNotValid) {
  ExpectProblem(DocumentLine("location / { return 200 '<Discovery'; }", 1),
                "It is not valid: it cannot be parsed", "Ask the administrator of the server");
}

TEST_F(DoctorOfDocuments, SeesThatTheDocumentDoesNotDescribeTheStore) {
  const StoreText store = WorkingStore("s1", "One");
  WriteDocument(server_, "s1", TestSupport::DiscoveryDocument({WorkingStore("s2", "Two")}));
  GiveStores({store});
  const std::string what = "It is valid, and describes one store, but not this one.";
  const std::string file = agent_.Write("a.cr", TestSupport::ServiceRecordDocument({store})).string();
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"doctor", "--store", "s1"}, {"doctor", file}}) {
    const SrctlRun run = Srctl(command);
    EXPECT_EQ(run.status, 1);
    ExpectProblem(StoreLine(run, "discovery document"), what, "Ask your administrator");
  }
  EXPECT_EQ(Srctl({"doctor", store.url}).status, 0) << "an address alone is no store";
}

TEST_F(DoctorOfDocuments, SeesThatTheDocumentIsNotText) {
  const StoreText store = WorkingStore("s1", "One");
  WriteDocument(server_, "s1", "<Discovery \xFF");
  GiveStores({store});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "discovery document"), "It is not UTF-8 text.",
                "Ask the administrator of the server");
}

TEST_F(DoctorOfDocuments, LooksAtTheStoresOfAFileThatAreNotInTheList) {
  const SrctlRun run = Srctl({"doctor", OpenableFile("a.cr", {Store("s1", "One")})});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(StoreLine(run, "server"), StartsWith("ok: "));
  EXPECT_THAT(StoreLine(run, "gateway"), StartsWith("ok: "));
  EXPECT_THAT(StoreLine(run, "discovery document"), StartsWith("ok: "));
  EXPECT_THAT(run.output, Not(HasSubstr("location: ")));
  EXPECT_THAT(StoreIDs(), IsEmpty());
}

TEST_F(DoctorOfDocuments, TellsWhereAFileBreaksItsSchema) {
  std::string document = TestSupport::ServiceRecordDocument({WorkingStore("s1", "One")});
  const std::string mistyped = "Auth=\"Domian\"";
  document.replace(document.find("Auth=\"Domain\""), mistyped.size(), mistyped);
  document.insert(document.find("<Gateways>"), "\n<Hint/>");
  const std::string file = agent_.Write("a.cr", document).string();
  const SrctlRun run = Srctl({"doctor", file});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(Line(run, "document: " + file + ", line 4, column 8"), "'Hint'", "Correct it there.");
  EXPECT_THAT(run.output, AllOf(HasSubstr("problem: document: " + file + ", line 4, column "),
                                HasSubstr("value 'Domian' not in enumeration. Next: ")));
  EXPECT_THAT(StoreLine(run, "server"), StartsWith("ok: ")) << "the agent reads it all the same";
}

TEST_F(DoctorOfDocuments, TellsWhereAFileBreaksOff) {
  std::string document = TestSupport::ServiceRecordDocument({WorkingStore("s1", "One")});
  document.erase(document.find("</Services>"));
  const std::string file = agent_.Write("a.cr", document).string();
  const SrctlRun run = Srctl({"doctor", file});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(Line(run, "document"), StartsWith("problem: document: " + file + ", line "));
  EXPECT_THAT(StoreLine(run, "server"), StartsWith("ok: "));
}

TEST_F(DoctorOfDocuments, TellsWhatTheReadingRefusesThoughTheSchemaAllowsIt) {
  const std::string file =
      agent_
          .Write("a.cr",
                 TestSupport::ServiceRecordDocument({WorkingStore("s1", "One"), Store("s\\2", "Two")}))
          .string();
  const SrctlRun run = Srctl({"doctor", file});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(Line(run, "document"), file + ": a service's id holds a backslash", "Correct it there.");
}

TEST_F(DoctorOfDocuments, SaysWhatAFileOfNeitherKindIs) {
  std::string document = TestSupport::ServiceRecordDocument({WorkingStore("s1", "One")});
  for (std::size_t at = 0; (at = document.find("Services", at)) != std::string::npos; ++at)
    document.replace(at, 8, "discovery");
  const std::string file = agent_.Write("a.cr", document).string();
  const SrctlRun run = Srctl({"doctor", file});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("problem: document: " + file +
                                    " is no service record: its root element is discovery; that of a service "
                                    "record is Services, that of a discovery document Discovery."));
}

TEST_F(DoctorOfDocuments, OfManyProblemsOfAFileTheFirstAreTold) {
  std::string document = TestSupport::ServiceRecordDocument({WorkingStore("s1", "One")});
  std::string hints;
  for (int i = 0; i < 30; ++i) hints += "<Hint a" + std::to_string(i) + "='1'/>";
  document.insert(document.find("<Gateways>"), hints);
  const SrctlRun run = Srctl({"doctor", agent_.Write("a.cr", document).string()});
  EXPECT_THAT(run.output,
              AllOf(HasSubstr("'a8'"), Not(HasSubstr("'a29'")), HasSubstr(": Further problems: ")));
}

TEST_F(DoctorOfDocuments, OnlyWhatBreaksARuleCountsHoweverMuchIsNotFound) {
  std::string document = TestSupport::ServiceRecordDocument({WorkingStore("s1", "One")});
  std::string schemas;
  for (int i = 0; i < 30; ++i) schemas += " urn:a" + std::to_string(i) + " a" + std::to_string(i) + ".xsd";
  document.insert(document.find(" serviceRecord.xsd\"") + 18, schemas);
  const SrctlRun run = Srctl({"doctor", agent_.Write("a.cr", document).string()});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(run.output, AllOf(HasSubstr("/a0.xsd'"), Not(HasSubstr("/a29.xsd'"))));
  EXPECT_THAT(run.output, Not(HasSubstr("Further problems")));
  document.insert(document.find("<Gateways>"), "<Hint/>");
  const SrctlRun broken = Srctl({"doctor", agent_.Write("a.cr", document).string()});
  EXPECT_EQ(broken.status, 1);
  EXPECT_THAT(broken.output, AllOf(HasSubstr("'Hint'"), Not(HasSubstr("Further problems"))));
  document = TestSupport::DiscoveryDocument({WorkingStore("s1", "One")});
  document.insert(document.find(" discovery\"") + 10, schemas);
  document.insert(document.find("<Gateways>"), "<Hint/>");
  WriteDocument(server_, "s1", document);
  GiveStores({Store("s1", "One")});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "discovery document"),
                "It is not valid: ", "Ask the administrator of the server");
}

TEST_F(DoctorOfDocuments, AFileThatNamesNoSchemaIsNotCalledValid) {
  const StoreText store = WorkingStore("s1", "One");
  std::string document = TestSupport::ServiceRecordDocument({store});
  EXPECT_THAT(Line(Srctl({"doctor", agent_.Write("a.cr", document).string()}), "document"),
              AllOf(StartsWith("ok: "), HasSubstr("It is valid, and describes one store.")));
  std::string another = document;
  another.replace(another.find("serviceRecord.xsd"), 13, "other");
  const SrctlRun notFound = Srctl({"doctor", agent_.Write("a.cr", another).string()});
  EXPECT_EQ(notFound.status, 0) << notFound.output;
  EXPECT_THAT(Line(notFound, "document"),
              AllOf(StartsWith("note: "), HasSubstr("/other.xsd'. Next: Give its root")));
  document.erase(document.find(" xsi:schemaLocation"),
                 document.find(".xsd\"") + 5 - document.find(" xsi:schemaL"));
  EXPECT_THAT(Line(Srctl({"doctor", agent_.Write("a.cr", document).string()}), "document"),
              AllOf(StartsWith("note: "), HasSubstr("It names no schema, so it was only read")));
}

TEST_F(DoctorOfDocuments, SeesWhereTheDocumentOfAServerBreaksItsSchema) {
  const StoreText store = WorkingStore("s1", "One");
  std::string document = TestSupport::DiscoveryDocument({store});
  document.insert(document.find("<SRID>"), "<Hint/>");
  WriteDocument(server_, "s1", document);
  GiveStores({store});
  ExpectProblem(StoreLine(Srctl({"doctor"}), "discovery document"), "It is not valid: line 3, column ",
                "Ask the administrator of the server");
  std::istringstream lines(Srctl({"doctor", "--store", "s1", "--json-lines"}).output);
  json finding;
  for (std::string line; finding["check"] != "discovery document" && std::getline(lines, line);)
    finding = json::parse(line);
  const json problems = finding["textMessage"]["places"]["problem"].value("places", json::object());
  const json first = problems.value("problems", json::object());
  EXPECT_EQ(first.value("pattern", ""), "line {line}, column {column}: {problem}") << problems;
  EXPECT_EQ(first.value("places", json::object()).value("line", ""), "3");
}

TEST_F(DoctorOfDocuments, ADocumentOfAServerThatNamesNoSchemaIsNotCalledValid) {
  const StoreText store = WorkingStore("s1", "One");
  std::string document = TestSupport::DiscoveryDocument({store});
  document.replace(document.find("xsi:schemaLocation"), 18, "xsi:anotherWord");
  WriteDocument(server_, "s1", document);
  GiveStores({store});
  EXPECT_EQ(
      StoreLine(Srctl({"doctor"}), "discovery document"),
      "note: store \"One\" (s1), discovery document: It can be read, but names no schema to validate it "
      "against.");
}

TEST_F(DoctorOfDocuments, NamesTheSchemaThatTheDocumentOfAServerNamesAndNobodyFinds) {
  const StoreText store = WorkingStore("s1", "One");
  std::string document = TestSupport::DiscoveryDocument({store});
  const std::string schema = "urn:morvane:discovery discovery";
  document.replace(document.find(schema), schema.size(), "urn:morvane:discovery other.xsd");
  WriteDocument(server_, "s1", document);
  GiveStores({store});
  const SrctlRun run = Srctl({"doctor"});
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(
      StoreLine(run, "discovery document"),
      AllOf(StartsWith("note: "), HasSubstr(": It can be read, but was not fully validated: unable to open "),
            HasSubstr("other.xsd")));
}

TEST_F(DoctorOfDocuments, WithoutTheSchemasTheInstallationIsToBlame) {
  GiveStores({WorkingStore("s1", "One")});
  const std::string what = " cannot be checked: the schemas to check it with are not in ";
  const std::string next = "Install the program again.";
  ExpectProblem(StoreLine(SrctlWithoutSchemas({"doctor"}), "discovery document"), "It" + what, next);
  const std::string file = OpenableFile("a.cr", {Store("s2", "Two")});
  const SrctlRun run = SrctlWithoutSchemas({"doctor", file});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(Line(run, "document"), file + what, next);
}

TEST_F(DoctorOfDocuments, AFileOfAnotherEncodingIsToBeSavedInTheRightOne) {
  const std::string file = agent_.Write("a.cr", "<Services \xFF").string();
  ExpectProblem(Line(Srctl({"doctor", file}), "document"), file + " cannot be checked: it is not UTF-8 text.",
                "Save it in that encoding");
}

TEST_F(DoctorOfDocuments, TellsWhyAFileIsNoServiceRecord) {
  const SrctlRun run = Srctl({"doctor", agent_.Write("a.cr", "this is none").string()});
  EXPECT_EQ(run.status, 1);
  ExpectProblem(Line(run, "document"),
                "a.cr is no service record: it cannot be parsed: line 1, column 1: ", "Ask whoever wrote it");
  EXPECT_THAT(Srctl({"doctor", "stores.example.com"}).errors,
              HasSubstr("Name a service-record file, or an address that begins with https://."));
}

}  // namespace
