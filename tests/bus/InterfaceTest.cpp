#include "bus/TwoPrograms.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <tuple>

using Bus::Deferred;
using PropertyList::Dictionary;
using testing::HasSubstr;

namespace {

class InterfaceTest : public TwoPrograms {
 protected:
  std::string Introspection() {
    const Bus::Result<std::string> text =
        Call<std::string>({kName, kPath, "org.freedesktop.DBus.Introspectable"}, "Introspect");
    return text ? *text : text.Failure().text;
  }
};

TEST_F(InterfaceTest, IsDescribedAsItsFunctionsAre) {
  Bus::Interface interface = NewInterface();
  interface.Method("several", {"one", "two"}, {"sum", "list"}, [](const std::string& /*one*/, bool /*two*/) {
    return std::tuple(std::uint64_t{1}, std::vector<Dictionary>());
  });
  interface.Method("later", {"text"}, {"found"},
                   [](const Deferred<std::optional<Dictionary>>& /*call*/, const std::string& /*text*/) {});
  interface.Property("state", [] { return std::string("good"); });
  interface.Signal<std::string, std::uint32_t>("Posted", {"name", "number"});
  Serve(std::move(interface));
  EXPECT_THAT(Introspection(), HasSubstr("  <method name=\"several\">\n"
                                         "   <arg type=\"s\" name=\"one\" direction=\"in\"/>\n"
                                         "   <arg type=\"b\" name=\"two\" direction=\"in\"/>\n"
                                         "   <arg type=\"t\" name=\"sum\" direction=\"out\"/>\n"
                                         "   <arg type=\"aa{sv}\" name=\"list\" direction=\"out\"/>\n"
                                         "  </method>\n"
                                         "  <method name=\"later\">\n"
                                         "   <arg type=\"s\" name=\"text\" direction=\"in\"/>\n"
                                         "   <arg type=\"a{sv}\" name=\"found\" direction=\"out\"/>\n"
                                         "  </method>\n"
                                         "  <property name=\"state\" type=\"s\" access=\"read\">\n"));
  EXPECT_THAT(Introspection(), HasSubstr("  <signal name=\"Posted\">\n"
                                         "   <arg type=\"s\" name=\"name\"/>\n"
                                         "   <arg type=\"u\" name=\"number\"/>\n"
                                         "  </signal>\n"));
}

TEST_F(InterfaceTest, EachMethodGetsItsOwnCallsAndGivesItsResults) {
  Bus::Interface interface = NewInterface();
  interface.Method("one", {}, {}, [](const std::string& text) { return text + "!"; });
  interface.Method("several", {}, {}, [](bool truth, std::uint32_t number) {
    return std::tuple(number, std::string(truth ? "y" : "n"));
  });
  interface.Method("none", {}, {}, [] {});
  Serve(std::move(interface));
  const auto one = Call<std::string>(kService, "one", std::string("x"));
  ASSERT_TRUE(one);
  EXPECT_EQ(*one, "x!");
  const auto several = Call<std::uint32_t, std::string>(kService, "several", true, std::uint32_t{5});
  ASSERT_TRUE(several);
  EXPECT_EQ(*several, std::tuple(5U, std::string("y")));
  EXPECT_TRUE(Call<>(kService, "none"));
}

TEST_F(InterfaceTest, WhatAHandlerThrowsIsAnErrorToItsCallerAlone) {
  int calls = 0;
  ServeMethod([&calls] {
    if (++calls == 1) throw std::runtime_error("it broke");
    if (calls == 2) throw 5;
  });
  const auto first = CallMethod<>();
  ASSERT_FALSE(first);
  EXPECT_EQ(first.Failure().name, "org.freedesktop.DBus.Error.Failed");
  EXPECT_EQ(first.Failure().text, "it broke");
  const auto second = CallMethod<>();
  ASSERT_FALSE(second);
  EXPECT_EQ(second.Failure().text, "internal error");
  EXPECT_TRUE(CallMethod<>());
}

TEST_F(InterfaceTest, AHandlerMayAnswerWithAnError) {
  bool fails = true;
  ServeMethod([&fails]() -> Bus::Result<> {
    if (fails) return Bus::Error::NotSupported("there is none");
    return Bus::Nothing{};
  });
  const auto result = CallMethod<>();
  ASSERT_FALSE(result);
  EXPECT_EQ(result.Failure().name, "org.freedesktop.DBus.Error.NotSupported");
  EXPECT_EQ(result.Failure().text, "there is none");
  fails = false;
  EXPECT_TRUE(CallMethod<>());
}

TEST_F(InterfaceTest, ACallWithOtherArgumentsDoesNotReachTheHandler) {
  bool reached = false;
  ServeMethod([&reached](const std::string& /*text*/) { reached = true; });
  EXPECT_FALSE(CallMethod<>(true));
  EXPECT_FALSE(CallMethod<>());
  EXPECT_FALSE(reached);
}

TEST_F(InterfaceTest, ADeferredCallIsAnsweredWhenItsTimeHasCome) {
  std::vector<Deferred<std::string>> waiting;
  ServeMethod([&waiting](const Deferred<std::string>& call) { waiting.push_back(call); });
  std::vector<std::string> replies;
  const auto take = [&replies](const Bus::Result<Bus::Message>& reply) {
    replies.push_back(*reply->Read<std::string>());
  };
  const auto first = caller_.CallAsync(kService, {}, "method", take);
  const auto second = caller_.CallAsync(kService, {}, "method", take);
  ASSERT_TRUE(ProcessUntil([&] { return waiting.size() == 2; }));
  waiting[1].Answer("second");
  waiting[0].Answer("first");
  ASSERT_TRUE(ProcessUntil([&] { return replies.size() == 2; }));
  EXPECT_THAT(replies, testing::ElementsAre("second", "first"));
  EXPECT_EQ(waiting[0].Caller(), waiting[1].Caller());
  EXPECT_THAT(waiting[0].Caller(), testing::StartsWith(":"));
}

TEST_F(InterfaceTest, ADeferredCallWhoseWorkThrowsFails) {
  ServeMethod([](const Deferred<std::string>& call) {
    call.AnswerWith([]() -> std::string { throw std::runtime_error("too late"); });
  });
  const auto result = CallMethod<std::string>();
  ASSERT_FALSE(result);
  EXPECT_EQ(result.Failure().name, "org.freedesktop.DBus.Error.Failed");
  EXPECT_EQ(result.Failure().text, "too late");
}

TEST_F(InterfaceTest, ADeferredCallWhoseResultCannotBeSentFails) {
  ServeMethod([](const Deferred<std::string>& call) { call.Answer("\xFF"); });
  EXPECT_FALSE(CallMethod<std::string>());
}

TEST_F(InterfaceTest, APropertyIsReadAfreshAndMayFail) {
  int reads = 0;
  Bus::Interface interface = NewInterface();
  interface.Property("count", [&reads]() -> std::uint64_t {
    if (++reads == 3) throw std::runtime_error("no more");
    return static_cast<std::uint64_t>(reads);
  });
  Serve(std::move(interface));
  const Bus::Service properties{kName, kPath, "org.freedesktop.DBus.Properties"};
  const auto get = [&] {
    return Call<Bus::Variant<std::uint64_t>>(properties, "Get", std::string(kService.interface),
                                             std::string("count"));
  };
  EXPECT_EQ(get()->value, 1U);
  EXPECT_EQ(get()->value, 2U);
  const auto third = get();
  ASSERT_FALSE(third);
  EXPECT_EQ(third.Failure().text, "no more");
}

TEST_F(InterfaceTest, IsServedForAsLongAsItsSlotLives) {
  ServeMethod([] {});
  EXPECT_TRUE(CallMethod<>());
  object_.reset();
  EXPECT_FALSE(CallMethod<>());
}

TEST_F(InterfaceTest, AHandlerMayTakeItsInterfaceAway) {
  const auto alive = std::make_shared<int>(0);
  const std::weak_ptr<int> watched = alive;
  ServeMethod([this, kept = alive] {
    object_.reset();
    ++*kept;
  });
  EXPECT_TRUE(CallMethod<>());
  EXPECT_EQ(*alive, 1);
  EXPECT_EQ(watched.use_count(), 1) << "the handler is gone";
}

}  // namespace
