#include "libs/PropertyList/PropertyList.h"
#include "libs/Text/TextHelpers.h"

#include <gtest/gtest.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <utility>

namespace {

using PropertyList::Array;
using PropertyList::Data;
using PropertyList::Date;
using PropertyList::Dictionary;
using PropertyList::Entry;
using PropertyList::Read;
using PropertyList::Value;
using PropertyList::Write;
using PropertyList::WriteChange;

std::string Document(const std::string& content) {
  return "<plist version=\"1.0\">" + content + "</plist>";
}

std::string Nested(std::size_t levels) {
  std::string arrays;
  for (std::size_t i = 0; i < levels; ++i) arrays += "<array>";
  for (std::size_t i = 0; i < levels; ++i) arrays += "</array>";
  return Document(arrays);
}

Value NestedValue(std::size_t levels) {
  Value value{Array()};
  for (std::size_t i = 1; i < levels; ++i) value = Value(Dictionary{{"inner", std::move(value)}});
  return value;
}

// Whether an independent XML parser accepts the text.
bool IsWellFormed(const std::string& xml) {
  using namespace xercesc;
  XMLPlatformUtils::Initialize();
  bool accepted = true;
  {
    XercesDOMParser parser;
    HandlerBase throwing;
    parser.setErrorHandler(&throwing);
    parser.setLoadExternalDTD(false);
    const MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(), "text");
    try {
      parser.parse(source);
    } catch (const SAXException&) {
      accepted = false;
    }
  }
  XMLPlatformUtils::Terminate();
  return accepted;
}

class RandomValues {
 public:
  Value Next(int depth) {
    switch (Below(depth > 0 ? 9 : 7)) {
      case 0:
        return Text();
      case 1:
        return static_cast<std::int64_t>(engine_());
      case 2:
        return engine_();
      case 3:
        return std::ldexp(static_cast<double>(engine_()), static_cast<int>(Below(200)) - 100);
      case 4:
        return Below(2) == 0;
      case 5:
        return Bytes();
      case 6:
        return Date{"2026-11-14T11:56:13Z"};
      case 7:
        return Elements(depth);
      default:
        return Members(depth);
    }
  }

  std::string Text() {
    static const std::string kPieces[] = {"a",
                                          "&",
                                          "<",
                                          "]]>",
                                          "\r",
                                          "\n",
                                          "\t",
                                          "\x01",
                                          "\x1f",
                                          "\xEF\xBF\xBE",
                                          "\xED\xA0\x80",
                                          "\xC3",
                                          "\xC3\xA4",
                                          "\"",
                                          "\x80",
                                          "\xF0\x9F\x98\x80"};
    std::string text;
    for (std::size_t i = Below(12); i > 0; --i) text += kPieces[Below(std::size(kPieces))];
    return text + std::string(Below(2), '\0');
  }

 private:
  std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }

  Data Bytes() {
    Data data(Below(200));
    for (std::byte& byte : data) byte = static_cast<std::byte>(engine_());
    return data;
  }

  Array Elements(int depth) {
    Array array;
    for (std::size_t i = Below(5); i > 0; --i) array.push_back(Next(depth - 1));
    return array;
  }

  Dictionary Members(int depth) {
    Dictionary dictionary;
    for (std::size_t i = Below(5); i > 0; --i) {
      dictionary.Set(PropertyList::WritableText(Text()), Next(depth - 1));
    }
    return dictionary;
  }

  std::mt19937_64 engine_{20261114};
};

TEST(PropertyListTest, EveryKindOfValueSurvivesWritingAndReading) {
  const Value root(Dictionary{
      {"string", "text"},
      {"empty string", ""},
      {"integer", std::int64_t{-42}},
      {"real", 0.1},
      {"true", true},
      {"false", false},
      {"date", Date{"2026-11-14T11:56:13Z"}},
      {"data", Data{std::byte{0}, std::byte{0xFF}, std::byte{'x'}, std::byte{'y'}}},
      {"empty data", Data()},
      {"array", Array{Value("one"), Value(std::int64_t{2}), Value(Array())}},
      {"dictionary", Dictionary{{"inner", Dictionary()}}},
  });
  EXPECT_EQ(Read(Write(root)), root);
}

TEST(PropertyListTest, WholeNumbersReachFromTheSmallestSignedToTheLargestUnsigned) {
  const Value root(Array{std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(),
                         std::numeric_limits<std::uint64_t>::max(), std::int64_t{0}});
  EXPECT_EQ(Read(Write(root)), root);
  EXPECT_FALSE(Read(Document("<integer>18446744073709551616</integer>")));
  EXPECT_FALSE(Read(Document("<integer>-9223372036854775809</integer>")));
}

TEST(PropertyListTest, WholeNumbersMayBeHexadecimalOrSigned) {
  EXPECT_EQ(Read(Document("<integer> 0xFF </integer>")), Value(std::int64_t{255}));
  EXPECT_EQ(Read(Document("<integer>+7</integer>")), Value(std::int64_t{7}));
}

TEST(PropertyListTest, ANegativeNumberMayBeHexadecimal) {
  EXPECT_EQ(Read(Document("<integer>-0x10</integer>")), Value(std::int64_t{-16}));
  EXPECT_EQ(Read(Document("<integer>+0X10</integer>")), Value(std::int64_t{16}));
  EXPECT_EQ(Read(Document("<integer>-0x8000000000000000</integer>")),
            Value(std::numeric_limits<std::int64_t>::min()));
  for (const char* number : {"-0x8000000000000001", "+-1", "--1", "0x-1", "-", "0x"})
    EXPECT_FALSE(Read(Document("<integer>" + std::string(number) + "</integer>"))) << number;
}

TEST(PropertyListTest, RealsBeyondTheRangeAreInfiniteOrZero) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::string zeros(400, '0');
  const std::pair<std::string, double> cases[] = {
      {"1e999", kInfinity},      {"-1e999", -kInfinity},    {"+1e99999999999", kInfinity},
      {"1e-999", 0.0},           {"-1e-999", -0.0},         {"1" + zeros, kInfinity},
      {"0." + zeros + "1", 0.0}, {"0.0001e999", kInfinity}, {"1000e-999", 0.0}};
  for (const auto& [text, number] : cases) {
    const auto root = Read(Document("<real>" + text + "</real>"));
    ASSERT_TRUE(root && root->As<double>() != nullptr) << text;
    EXPECT_EQ(*root->As<double>(), number) << text;
    EXPECT_EQ(std::signbit(*root->As<double>()), std::signbit(number)) << text;
  }
  EXPECT_FALSE(Read(Document("<real>1e999x</real>")));
}

TEST(PropertyListTest, RealsKeepEveryBitAndTheirSpecialValues) {
  for (const double number : {0.1, -0.0, 1e308, 5e-324, 1.0 / 3, std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity()}) {
    const auto root = Read(Write(number));
    ASSERT_TRUE(root && root->As<double>() != nullptr) << number;
    EXPECT_EQ(*root->As<double>(), number);
    EXPECT_EQ(std::signbit(*root->As<double>()), std::signbit(number));
  }
  const auto notANumber = Read(Write(std::numeric_limits<double>::quiet_NaN()));
  ASSERT_TRUE(notANumber && notANumber->As<double>() != nullptr);
  EXPECT_TRUE(std::isnan(*notANumber->As<double>()));
}

TEST(PropertyListTest, EntriesKeepTheOrderOfTheDocument) {
  const auto root = Read(Document("<dict><key>z</key><true/><key>a</key><true/><key>m</key><true/></dict>"));
  ASSERT_TRUE(root);
  const auto& entries = root->As<Dictionary>()->Entries();
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[0].key, "z");
  EXPECT_EQ(entries[1].key, "a");
  EXPECT_EQ(entries[2].key, "m");
}

TEST(PropertyListTest, ANameThatOccursTwiceKeepsItsLastValue) {
  const auto root = Read(Document(
      "<dict><key>a</key><string>1</string><key>b</key><true/><key>a</key><string>2</string></dict>"));
  EXPECT_EQ(root, Value(Dictionary{{"a", "2"}, {"b", true}}));
}

TEST(PropertyListTest, SettingAHeldNameReplacesItsValueInPlace) {
  Dictionary dictionary{{"a", "1"}, {"b", "2"}};
  dictionary.Set("a", "3");
  EXPECT_EQ(dictionary, (Dictionary{{"a", "3"}, {"b", "2"}}));
  EXPECT_TRUE(dictionary.Erase("a"));
  EXPECT_FALSE(dictionary.Erase("a"));
  EXPECT_EQ(dictionary.Find("a"), nullptr);
}

// What a dictionary has to do, done by looking through all entries.
class PlainEntries {
 public:
  void Set(const std::string& key, std::int64_t value) {
    for (Entry& entry : entries_) {
      if (entry.key == key) return static_cast<void>(entry.value = value);
    }
    entries_.push_back({key, value});
  }
  bool Erase(const std::string& key) {
    return std::erase_if(entries_, [&](const Entry& entry) { return entry.key == key; }) != 0;
  }
  [[nodiscard]] const Value* Find(const std::string& key) const {
    for (const Entry& entry : entries_) {
      if (entry.key == key) return &entry.value;
    }
    return nullptr;
  }
  [[nodiscard]] const std::vector<Entry>& Entries() const { return entries_; }

 private:
  std::vector<Entry> entries_;
};

TEST(PropertyListTest, ADictionaryOfAnySizeKeepsItsEntriesInOrderAndFindsThem) {
  std::mt19937 engine{20261122};
  Dictionary dictionary;
  PlainEntries plain;
  for (std::int64_t step = 0; step < 4000; ++step) {
    const std::string key = std::to_string(engine() % 60);
    if (engine() % 4 == 0) {
      ASSERT_EQ(dictionary.Erase(key), plain.Erase(key));
    } else {
      EXPECT_EQ(dictionary.Set(key, step), Value(step));
      plain.Set(key, step);
    }
    if (step % 7 == 0) dictionary = Dictionary(dictionary);
    ASSERT_EQ(dictionary.Entries(), plain.Entries());
    for (int name = 0; name < 60; ++name) {
      const Value* const found = std::as_const(dictionary).Find(std::to_string(name));
      const Value* const expected = plain.Find(std::to_string(name));
      ASSERT_EQ(found == nullptr, expected == nullptr) << name;
      if (found != nullptr) {
        ASSERT_EQ(*found, *expected) << name;
      }
    }
  }
}

TEST(PropertyListTest, ADictionaryMadeOfManyEntriesIsTheOneOfWhichTheyWereSet) {
  std::mt19937 engine{20261123};
  for (std::size_t size = 0; size < 100; ++size) {
    std::vector<Entry> entries;
    Dictionary set;
    for (std::size_t i = 0; i < size; ++i) {
      const Entry& entry = entries.emplace_back(Entry{std::to_string(engine() % 70), std::uint64_t{i}});
      set.Set(entry.key, entry.value);
    }
    const Dictionary made(entries);
    ASSERT_EQ(made, set);
    for (const Entry& entry : set.Entries()) ASSERT_EQ(*made.Find(entry.key), entry.value);
  }
}

TEST(PropertyListTest, DocumentTypeCommentsAndInstructionsAreSkipped) {
  const auto root = Read(
      "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\r\n<?tool a > b?><!-- <plist> -->\n"
      "<!DOCTYPE plist PUBLIC \"a>b\" 'c' [ <!-- ]> \" --> <!ENTITY e \"]>\"> ]>"
      "<plist version=\"1.0\" other='>'><!-- a -->\n<dict ><!-- b --><key>a<!-- c --></key> <?d?> "
      "<string>one<!-- two --><?three?> four</string ></dict> <!-- e --></plist>\n<!-- f --> ");
  EXPECT_EQ(root, Value(Dictionary{{"a", "one four"}}));
}

TEST(PropertyListTest, CharacterDataSectionsAndReferencesAreResolved) {
  const auto root = Read(
      Document("<string>a<![CDATA[<b>&amp;]]>&lt;&gt;&amp;&quot;&apos;&#65;&#x20AC;&#x1F600;&#13;</string>"));
  EXPECT_EQ(root, Value("a<b>&amp;<>&\"'A\xE2\x82\xAC\xF0\x9F\x98\x80\r"));
}

TEST(PropertyListTest, LineEndsAreReadAsSingleNewlines) {
  EXPECT_EQ(Read(Document("<string>a\r\nb\rc\n</string>")), Value("a\nb\nc\n"));
}

TEST(PropertyListTest, BlanksInsideTextAreKept) {
  EXPECT_EQ(Read(Document("<string>  a \t\n</string>")), Value("  a \t\n"));
}

TEST(PropertyListTest, TheNameOfTheEncodingMayBeThatOfASCII) {
  for (const std::string& encoding : {std::string("US-ASCII"), std::string("us-ascii")}) {
    EXPECT_EQ(Read("<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>" +
                   Document("<dict><key>a</key><string>&#228;</string></dict>")),
              Value(Dictionary{{"a", "\xC3\xA4"}}));
  }
}

TEST(PropertyListTest, OtherEncodingsAreRefused) {
  EXPECT_FALSE(Read("<?xml version=\"1.0\" encoding=\"US-ASCII-2\"?>" + Document("<true/>")));
  EXPECT_FALSE(Read("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + Document("<true/>")));
  EXPECT_FALSE(Read("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + Document("<true/>")));
  EXPECT_FALSE(Read(Document("<string>\xE4</string>")));
  const std::u16string wide = u"\xFEFF<plist><true/></plist>";
  EXPECT_FALSE(Read(std::string_view(reinterpret_cast<const char*>(wide.data()), wide.size() * 2)));
}

TEST(PropertyListTest, ContainersMayBeNestedUpToTheLimit) {
  EXPECT_TRUE(Read(Nested(PropertyList::kMaximumDepth)));
  EXPECT_FALSE(Read(Nested(PropertyList::kMaximumDepth + 1)));
  EXPECT_FALSE(Read(Nested(50000)));
}

TEST(PropertyListTest, ContainersBeyondTheLimitAreNotWritten) {
  const Value deepest = NestedValue(PropertyList::kMaximumDepth);
  EXPECT_EQ(Read(Write(deepest)), deepest);
  EXPECT_TRUE(Read(Write(NestedValue(PropertyList::kMaximumDepth + 1))));
  EXPECT_NE(Write(NestedValue(PropertyList::kMaximumDepth + 1)).find("<dict>"), std::string::npos);
}

TEST(PropertyListTest, MalformedDocumentsAreRefused) {
  for (const char* const document : {"",
                                     " ",
                                     "text",
                                     "<plist",
                                     "<plist>",
                                     "<plist/>",
                                     "<plist></plist>",
                                     "<dict></dict>",
                                     "<plist><true/><true/></plist>",
                                     "<plist><true/></plist><plist><true/></plist>",
                                     "<plist><true/></plist>text",
                                     "text<plist><true/></plist>",
                                     "<plist><unknown/></plist>",
                                     "<plist><string>a</plist>",
                                     "<plist><string>a</array></plist>",
                                     "<plist><string>a<b/></string></plist>",
                                     "<plist><string>&unknown;</string></plist>",
                                     "<plist><string>&#1;</string></plist>",
                                     "<plist><string>&#xD800;</string></plist>",
                                     "<plist><string>&#x110000;</string></plist>",
                                     "<plist><string>&#;</string></plist>",
                                     "<plist><string>a & b</string></plist>",
                                     "<plist><string>]]></string></plist>",
                                     "<plist><string>\x01</string></plist>",
                                     "<plist><string>\xEF\xBF\xBE</string></plist>",
                                     "<plist><string><![CDATA[a</string></plist>",
                                     "<plist><integer/></plist>",
                                     "<plist><integer>1.5</integer></plist>",
                                     "<plist><integer>a</integer></plist>",
                                     "<plist><real/></plist>",
                                     "<plist><real>1.5x</real></plist>",
                                     "<plist><true>a</true></plist>",
                                     "<plist><data>A</data></plist>",
                                     "<plist><data>!!!!</data></plist>",
                                     "<plist><data>A===</data></plist>",
                                     "<plist><dict><key>a</key></dict></plist>",
                                     "<plist><dict><true/></dict></plist>",
                                     "<plist><dict>text<key>a</key><true/></dict></plist>",
                                     "<plist><dict><key>a</key><key>b</key></dict></plist>",
                                     "<plist><array>text</array></plist>",
                                     "<plist><array><true/></plist>",
                                     "<plist a><true/></plist>",
                                     "<plist a=b><true/></plist>",
                                     "<plist a='<'><true/></plist>",
                                     "<plist><!-- a -- b --><true/></plist>",
                                     "<!DOCTYPE plist",
                                     "<!DOCTYPE plist [",
                                     "<?xml version='1.0'",
                                     "<!-- a",
                                     "<? a"}) {
    EXPECT_FALSE(Read(document)) << document;
  }
}

TEST(PropertyListTest, MarkupAndCarriageReturnsAreEscaped) {
  const std::string xml = Write("<&>\r\n");
  EXPECT_NE(xml.find("<string>&lt;&amp;&gt;&#13;\n</string>"), std::string::npos);
  EXPECT_EQ(Read(xml), Value("<&>\r\n"));
}

TEST(PropertyListTest, CharactersThatXMLCannotHoldAreLeftOut) {
  using std::string_literals::operator""s;
  EXPECT_EQ(PropertyList::WritableText("a\0\x1b\t\n\r\xEF\xBF\xBE\xEF\xBF\xBF\xED\xA0\x80\xFF\xC0\x80z"s),
            "a\t\n\rz");
  EXPECT_EQ(PropertyList::WritableText("\xEF\xBF\xBD\x7F"), "\xEF\xBF\xBD\x7F");
}

TEST(PropertyListTest, WhichCharactersCanBeWrittenIsTheSameForTextAndForOneOfThem) {
  for (wchar_t character = 0; character <= 0x110010; ++character) {
    const std::string utf8 = util::narrow(std::wstring(1, character));
    const bool isKept = !utf8.empty() && PropertyList::WritableText(utf8) == utf8;
    ASSERT_EQ(PropertyList::IsWritable(character), isKept) << static_cast<long>(character);
  }
  EXPECT_FALSE(PropertyList::IsWritable(static_cast<wchar_t>(-1)));
}

TEST(PropertyListTest, TheHeaderNamesTheFormat) {
  EXPECT_EQ(Write(Dictionary{{"a", Array{"b"}}}),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n\t<key>a</key>\n\t<array>\n\t\t<string>b</string>\n\t</array>\n</dict>\n"
            "</plist>\n");
}

TEST(PropertyListTest, AnyTextIsWrittenSoThatEveryReaderAcceptsIt) {
  RandomValues values;
  for (int i = 0; i < 2000; ++i) {
    const std::string text = values.Text();
    const std::string xml = Write(Dictionary{{text, text}});
    const std::string clean = PropertyList::WritableText(text);
    ASSERT_EQ(Read(xml), Value(Dictionary{{clean, clean}})) << xml;
    if (i % 20 == 0) {
      ASSERT_TRUE(IsWellFormed(xml)) << xml;
    }
  }
}

TEST(PropertyListTest, AnyTreeIsTheSameAfterASecondRoundTrip) {
  RandomValues values;
  for (int i = 0; i < 500; ++i) {
    const std::string xml = Write(values.Next(6));
    const auto root = Read(xml);
    ASSERT_TRUE(root) << xml;
    EXPECT_EQ(Write(*root), xml);
    if (i % 20 == 0) {
      EXPECT_TRUE(IsWellFormed(xml)) << xml;
    }
  }
}

TEST(PropertyListTest, ATruncatedDocumentIsRefused) {
  const std::string xml = Write(Dictionary{{"a", Array{"b", true}}, {"c", Data(10)}});
  const std::size_t complete = xml.find("</plist>") + std::string_view("</plist>").size();
  for (std::size_t length = 0; length < complete; ++length)
    EXPECT_FALSE(Read(xml.substr(0, length))) << length;
  EXPECT_TRUE(Read(xml.substr(0, complete)));
}

TEST(PropertyListTest, AnyNumberOrBooleanIsAWholeNumber) {
  EXPECT_EQ(Value(std::int64_t{-1}).AsNumber(), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(Value(std::numeric_limits<std::uint64_t>::max()).AsNumber(),
            std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(Value(3.9).AsNumber(), 3U);
  EXPECT_EQ(Value(-3.9).AsNumber(), static_cast<std::uint64_t>(-3));
  EXPECT_EQ(Value(1e300).AsNumber(), 0U);
  EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).AsNumber(), 0U);
  EXPECT_EQ(Value(true).AsNumber(), 1U);
  EXPECT_EQ(Value("1").AsNumber(), std::nullopt);
}

TEST(PropertyListTest, CopiesStayAsTheyAreWhenOneOfThemChanges) {
  const Dictionary inner{{"a", 1}};
  const Dictionary first{{"inner", inner}, {"other", "text"}};
  Dictionary second = first;
  second.Find("inner")->As<Dictionary>()->Set("a", 2);
  Dictionary third = second;
  EXPECT_TRUE(third.Erase("inner"));
  third.Set("other", "changed");
  second = Dictionary(second);
  EXPECT_EQ(inner, (Dictionary{{"a", 1}}));
  EXPECT_EQ(first, (Dictionary{{"inner", Dictionary{{"a", 1}}}, {"other", "text"}}));
  EXPECT_EQ(second, (Dictionary{{"inner", Dictionary{{"a", 2}}}, {"other", "text"}}));
  EXPECT_EQ(third, (Dictionary{{"other", "changed"}}));
}

// Names that occur on every level, and texts that look like lines of the file.
Dictionary TreeToChange() {
  const Dictionary leaf{{"name", "\n\t\t<key>b</key>\n"}, {"a", 1}, {"real", 0.0}, {"list", Array{"a", 2}}};
  const Dictionary branch{{"b", leaf}, {"<&>", leaf}, {"a", Dictionary()}, {"last", leaf}};
  return {{"a", branch}, {"b", branch}, {"none", Dictionary()}, {"flag", true}};
}

Dictionary& Inner(Dictionary& tree, std::initializer_list<std::string_view> path) {
  Dictionary* inner = &tree;
  for (const std::string_view name : path) inner = inner->Find(name)->As<Dictionary>();
  return *inner;
}

void ExpectTextOfChange(const std::function<void(Dictionary&)>& change) {
  const Dictionary before = TreeToChange();
  Dictionary tree = before;
  change(tree);
  EXPECT_EQ(WriteChange(tree, before, Write(before)), Write(tree));
}

TEST(PropertyListTest, TheTextOfAChangeIsThatOfTheWholeTree) {
  ExpectTextOfChange([](Dictionary&) {});
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b", "b"}).Set("a", 7); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"a", "last"}).Set("a", 7); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b", "<&>"}).Set("new", "text"); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b", "<&>"}).Erase("name"); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b"}).Erase("b"); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b"}).Set("new", Dictionary{{"a", 1}}); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b", "a"}).Set("a", 1); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b"}).Set("b", Dictionary()); });
  ExpectTextOfChange([](Dictionary& tree) { Inner(tree, {"b"}).Set("b", "text"); });
  ExpectTextOfChange([](Dictionary& tree) { tree.Set("flag", false); });
  ExpectTextOfChange([](Dictionary& tree) { tree = Dictionary(); });
  ExpectTextOfChange([](Dictionary& tree) {
    Inner(tree, {"b"}).Erase("last");
    Inner(tree, {"b"}).Set("renamed", Dictionary{{"a", 1}});
  });
}

TEST(PropertyListTest, TheTextOfSeveralChangesIsThatOfTheWholeTree) {
  ExpectTextOfChange([](Dictionary& tree) {
    Inner(tree, {"a", "b"}).Set("a", 7);
    Inner(tree, {"b", "b"}).Set("a", 7);
  });
  ExpectTextOfChange([](Dictionary& tree) {
    Inner(tree, {"b", "b"}).Set("a", 7);
    Inner(tree, {"b"}).Set("a", "text");
  });
  ExpectTextOfChange([](Dictionary& tree) {
    tree.Set("flag", false);
    Inner(tree, {"b", "b"}).Set("a", 7);
  });
  ExpectTextOfChange([](Dictionary& tree) {
    Inner(tree, {"b", "b"}).Set("inner", Dictionary{{"a", 1}});
    Inner(tree, {"b", "b"}).Set("real", -0.0);
  });
}

TEST(PropertyListTest, AChangeOfOneZeroIntoTheOtherIsWritten) {
  const Dictionary before{{"real", 0.0}, {"inner", Dictionary{{"a", 1}}}};
  Dictionary tree = before;
  tree.Set("real", -0.0);
  Inner(tree, {"inner"}).Set("a", 2);
  EXPECT_EQ(WriteChange(tree, before, Write(before)), Write(tree));
}

TEST(PropertyListTest, TheTextOfATreeThatSharesNothingIsThatOfTheWholeTree) {
  const Dictionary before = TreeToChange();
  EXPECT_EQ(WriteChange(TreeToChange(), before, Write(before)), Write(before));
  EXPECT_EQ(WriteChange(before, Dictionary(), Write(Dictionary())), Write(before));
}

TEST(PropertyListTest, WhatAChangeLeavesAloneIsNotWrittenAgain) {
  const Dictionary before = TreeToChange();
  Dictionary tree = before;
  Inner(tree, {"b", "b"}).Set("a", 7);
  std::string marked = Write(before);
  marked.replace(marked.find("<true/>"), 7, "<mark/>");
  EXPECT_NE(WriteChange(tree, before, marked).find("<mark/>"), std::string::npos);
}

TEST(PropertyListTest, AChangeAtTheDeepestLevelIsWritten) {
  Dictionary before{{"value", 1}};
  for (std::size_t level = 1; level < PropertyList::kMaximumDepth + 1; ++level)
    before = Dictionary{{"inner", std::move(before)}, {"value", 1}};
  Dictionary tree = before;
  for (Dictionary* inner = &tree; inner != nullptr;
       inner = inner->Find("inner") != nullptr ? inner->Find("inner")->As<Dictionary>() : nullptr)
    if (inner->Find("inner") == nullptr) inner->Set("value", 2);
  EXPECT_EQ(WriteChange(tree, before, Write(before)), Write(tree));
}

}  // namespace
