#include "bus/TwoPrograms.h"
#include "libs/Bus/BusText.h"

#include <gmock/gmock.h>

#include <cerrno>

using Bus::ObjectPath;
using Bus::Variant;
using PropertyList::Array;
using PropertyList::Dictionary;
using PropertyList::Value;
using testing::ElementsAre;

namespace {

class CodecTest : public TwoPrograms {
 protected:
  // What comes back from a service that sends what it got.
  template <class Type>
  Type Echo(const Type& value) {
    ServeMethod([](const Type& received) { return received; });
    Bus::Result<Type> result = CallMethod<Type>(value);
    EXPECT_TRUE(result) << result.Failure().text;
    return result ? *result : Type{};
  }

  // All values of a reply into which the test writes what it likes.
  Array ReadReply(const std::function<int(sd_bus_message*)>& write) {
    sd_bus_message* made = nullptr;
    Bus::Result<Bus::Message> message = caller_.CallForReply(kBus, {}, "GetId");
    EXPECT_TRUE(message);
    sd_bus* const bus = sd_bus_message_get_bus(message->Get());
    EXPECT_GE(sd_bus_message_new_signal(bus, &made, "/", "a.b", "C"), 0);
    const Bus::Message owned{Bus::BusMessagePtr(made)};
    EXPECT_GE(write(made), 0);
    EXPECT_GE(sd_bus_message_seal(made, 1, 0), 0);
    const Bus::Result<Array> values = owned.Values();
    EXPECT_TRUE(values);
    return values ? *values : Array{};
  }

  static constexpr Bus::Service kBus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
};

TEST_F(CodecTest, BasicValuesArriveAsTheyWere) {
  EXPECT_EQ(Echo<std::string>("T\u00e4xt"), "T\u00e4xt");
  EXPECT_EQ(Echo<std::string>(""), "");
  EXPECT_EQ(Echo(ObjectPath{"/a/b"}).text, "/a/b");
  EXPECT_TRUE(Echo(true));
  EXPECT_FALSE(Echo(false));
  EXPECT_EQ(Echo(std::uint32_t{4294967295}), 4294967295);
  EXPECT_EQ(Echo(std::uint64_t{18446744073709551615U}), 18446744073709551615U);
}

TEST_F(CodecTest, ListsArriveInTheirOrder) {
  EXPECT_THAT(Echo(std::vector<std::string>{"b", "a", "b"}), ElementsAre("b", "a", "b"));
  EXPECT_TRUE(Echo(std::vector<std::string>{}).empty());
}

TEST_F(CodecTest, DictionariesArriveWithAllTheyHoldInItsOrder) {
  const Dictionary inner{{"IsDefault", true}, {"GatewayName", "G"}};
  const Dictionary dictionary{{"Text", "x"},
                              {"Large", std::uint64_t{18446744073709551615U}},
                              {"No", false},
                              {"Inner", Array{Value(inner), Value(Dictionary())}}};
  EXPECT_EQ(Echo(dictionary), dictionary);
  EXPECT_EQ(Echo(Dictionary()), Dictionary());
  EXPECT_THAT(Echo(std::vector<Dictionary>{dictionary, inner}), ElementsAre(dictionary, inner));
}

TEST_F(CodecTest, SharedDictionariesAndNothingTravelAsDictionaries) {
  const auto shared = std::make_shared<const Dictionary>(Dictionary{{"Key", "x"}});
  ServeMethod([shared] { return PropertyList::SharedDictionaries{shared, shared}; });
  const auto list = CallMethod<std::vector<Dictionary>>();
  ASSERT_TRUE(list);
  EXPECT_THAT(*list, ElementsAre(*shared, *shared));
  ServeMethod([] { return std::optional<Dictionary>(); });
  const auto nothing = CallMethod<Dictionary>();
  ASSERT_TRUE(nothing);
  EXPECT_TRUE(nothing->Empty());
}

TEST_F(CodecTest, AVariantHoldsExactlyItsType) {
  EXPECT_EQ(Echo(Variant<std::string>{"x"}).value, "x");
  ServeMethod([] { return Variant<bool>{true}; });
  const auto wrong = CallMethod<Variant<std::string>>();
  ASSERT_FALSE(wrong);
  EXPECT_EQ(wrong.Failure().code, ENXIO);
}

TEST_F(CodecTest, AReplyOfAnotherTypeIsAnError) {
  ServeMethod([] { return std::uint64_t{1}; });
  EXPECT_FALSE(CallMethod<std::string>());
  EXPECT_FALSE((CallMethod<std::uint64_t, std::string>())) << "there is no second value";
  EXPECT_TRUE(CallMethod<std::uint64_t>());
}

TEST_F(CodecTest, TextThatTheBusDoesNotCarryIsAnErrorBeforeItIsSent) {
  EXPECT_FALSE(CallMethod<>(std::string("\xFF")));
  EXPECT_FALSE(CallMethod<>(std::string("\uFDD0")));
  EXPECT_EQ(Bus::Text(std::wstring(L"a\uFDD0\0b\uFFFF", 5)), "a\uFFFD\uFFFDb\uFFFD");
  EXPECT_EQ(Echo(Bus::Text(L"\U0010FFFF\uFFFEx")), "\uFFFD\uFFFDx");
}

TEST_F(CodecTest, ValuesThatNoDictionaryOfOursHoldsAreNotSent) {
  EXPECT_FALSE(CallMethod<>(Dictionary{{"Date", PropertyList::Date{"2026"}}}));
  EXPECT_FALSE(CallMethod<>(Dictionary{{"Texts", Array{Value("x")}}}));
}

TEST_F(CodecTest, WhateverElseComesIsReadAsWhatIsNearestOrPassedOver) {
  const Array values = ReadReply([](sd_bus_message* message) {
    return sd_bus_message_append(message, "dua{sv}v(is)aso", 1.5, 7U, 4, "Half", "d", 0.5, "Path", "o", "/p",
                                 "Deep", "v", "s", "x", "Numbers", "au", 2, 1U, 2U, "y", 5, 3, "s", 2, "a",
                                 "b", "/end");
  });
  const Dictionary dictionary{
      {"Path", "/p"}, {"Deep", "x"}, {"Numbers", Array{Value(std::uint32_t{1}), Value(std::uint32_t{2})}}};
  EXPECT_THAT(values, ElementsAre(Value(std::uint32_t{7}), Value(dictionary),
                                  Value(Array{Value("a"), Value("b")}), Value("/end")));
}

}  // namespace
