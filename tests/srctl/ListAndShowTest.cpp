#include "libs/Text/TextHelpers.h"
#include "srctl/SrctlTest.h"

#include <algorithm>

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::StoreText;

namespace {

class SrctlList : public SrctlTest {};
class SrctlShow : public SrctlTest {};

StoreText PlainStore(const std::string& name) {
  StoreText store;
  store.id = "s1";
  store.name = name;
  store.url = "https://one.example";
  return store;
}

StoreText ExampleStore() {
  StoreText store = PlainStore("One");
  store.gateways = {{.name = "Branch", .location = "https://branch.example"},
                    {.name = "Head Office", .location = "https://head.example", .isDefault = true}};
  return store;
}

// The name stands at the store and at its gateway.
StoreText StoreNamed(const std::string& name) {
  StoreText store = PlainStore(name);
  store.gateways = {{.name = name, .location = "https://gateway.example"}};
  return store;
}

bool IsControl(wchar_t character) {
  return (character < 0x20 && character != L'\n') || (character >= 0x7F && character < 0xA0) ||
         (character >= 0x2028 && character <= 0x202E);
}

bool HasControls(const std::string& utf8) {
  const std::wstring text = util::widen(utf8);
  return std::any_of(text.begin(), text.end(), IsControl);
}

TEST_F(SrctlList, WithoutStoresTellsHowToGetOne) {
  agent_.Start();
  const SrctlRun run = Srctl({"list"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "There are no stores yet. Open a service-record file to add one: srctl open FILE\n");
  EXPECT_THAT(run.errors, IsEmpty());
}

TEST_F(SrctlList, WithoutStoresIsAnEmptyArrayInJson) {
  agent_.Start();
  const SrctlRun run = Srctl({"list", "--json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, "[]\n");
}

TEST_F(SrctlList, StartsTheAgentThatDoesNotRun) {
  EXPECT_EQ(Srctl({"list"}).status, 0);
  EXPECT_TRUE(agent_.Bus().HasOwner("com.morvane.ServiceRecords"));
}

TEST_F(SrctlList, AlignsItsColumns) {
  agent_.Start();
  StoreText other = PlainStore("Zwei");
  other.id = "another-store";
  GiveStores({ExampleStore(), other});
  const SrctlRun run = Srctl({"list"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            "ID             NAME  URL                  DEFAULT GATEWAY\n"
            "another-store  Zwei  https://one.example  -\n"
            "s1             One   https://one.example  Head Office\n");
}

TEST_F(SrctlList, AlignsColumnsByTheWidthOnTheTerminal) {
  agent_.Start();
  GiveStores({PlainStore("店舗")});
  EXPECT_EQ(Srctl({"list"}).output,
            "ID  NAME  URL                  DEFAULT GATEWAY\n"
            "s1  店舗  https://one.example  -\n");
}

TEST_F(SrctlList, GivesProgramsEverythingAboutAStore) {
  agent_.Start();
  GiveStores({ExampleStore()});
  const SrctlRun run = Srctl({"list", "--json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(
      json::parse(run.output),
      (json::array({{{"id", "s1"},
                     {"name", "One"},
                     {"url", "https://one.example"},
                     {"type", 0},
                     {"gateways",
                      {{{"name", "Branch"}, {"url", "https://branch.example"}, {"default", false}},
                       {{"name", "Head Office"}, {"url", "https://head.example"}, {"default", true}}}}}})));
}

TEST_F(SrctlShow, ShowsAStoreWithItsGateways) {
  agent_.Start();
  GiveStores({ExampleStore()});
  const SrctlRun run = Srctl({"show", "s1"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            "ID        s1\n"
            "Name      One\n"
            "URL       https://one.example\n"
            "Type      store\n"
            "Gateways  2\n"
            "\n"
            "  GATEWAY      URL                     DEFAULT\n"
            "  Branch       https://branch.example  no\n"
            "  Head Office  https://head.example    yes\n");
}

TEST_F(SrctlShow, ShowsAStoreWithoutGateways) {
  agent_.Start();
  GiveStores({PlainStore("One")});
  EXPECT_THAT(Srctl({"show", "s1"}).output, testing::EndsWith("Gateways  none\n"));
  EXPECT_EQ(json::parse(Srctl({"show", "s1", "--json"}).output)["gateways"], json::array());
}

TEST_F(SrctlShow, GivesTheSameObjectInJsonAsTheList) {
  agent_.Start();
  GiveStores({ExampleStore()});
  const SrctlRun run = Srctl({"show", "--json", "s1"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(json::parse(run.output), json::parse(Srctl({"list", "--json"}).output)[0]);
}

TEST_F(SrctlShow, AnUnknownStoreIsRefusedInBothFormats) {
  agent_.Start();
  GiveStores({ExampleStore()});
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"show", "S1"}, {"show", "S1", "--json"}}) {
    const SrctlRun run = Srctl(arguments);
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.output, IsEmpty());
    EXPECT_EQ(run.errors, "srctl: There is no store with the id \"S1\". Ids: srctl list\n");
  }
}

TEST_F(SrctlShow, KeepsControlsOfDocumentsAwayFromTheTerminal) {
  agent_.Start();
  // An escape sequence in its 8-bit form, a line of its own, text that runs backwards.
  StoreText store = StoreNamed("A&#x9B;31mB&#10;C&#x202E;D&#x7F;E");
  store.gateways.front().name = "B&#10;C&#x202E;D";  // which may hold no others
  GiveStores({store});
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"list"}, {"list", "--json"}, {"show", "s1"}, {"show", "s1", "--json"}}) {
    const SrctlRun run = Srctl(arguments);
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.output, HasSubstr("31mB")) << "the name itself is there";
    EXPECT_FALSE(HasControls(run.output)) << run.output;
  }
  EXPECT_THAT(Srctl({"list"}).output, HasSubstr("A\uFFFD31mB\uFFFDC\uFFFDD\uFFFDE"));
}

TEST_F(SrctlShow, KeepsEscapeSequencesOfTheCommandLineAwayFromTheTerminal) {
  agent_.Start();
  const SrctlRun run = Srctl({"show", "\x1B[31mred"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.errors, HasSubstr("\"\uFFFD[31mred\""));
}

TEST_F(SrctlShow, KeepsNamesOfEveryScriptIntact) {
  agent_.Start();
  const std::string name = "Gеschäft 店舗 متجر";
  GiveStores({StoreNamed(name)});
  for (const char* command : {"list", "show"}) {
    std::vector<std::string> arguments{command};
    if (arguments.front() == "show") arguments.emplace_back("s1");
    EXPECT_THAT(Srctl(arguments).output, HasSubstr(name));
    arguments.emplace_back("--json");
    json stores = json::parse(Srctl(arguments).output);
    if (stores.is_array()) stores = stores[0];
    EXPECT_EQ(stores["name"], name);
    EXPECT_EQ(stores["gateways"][0]["name"], name);
  }
}

}  // namespace
