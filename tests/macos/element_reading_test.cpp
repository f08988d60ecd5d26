// One accessibility message: its answer as a value, its time-out, and who owns what afterwards.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>
#include <variant>
#include <vector>

#include "macos/stepped_desktop.h"
#include "platform/macos/element_reference.h"

namespace callmonitor::macos {
namespace {

using platform::Element;
using platform::Reading;
namespace code = platform::code;

constexpr const char* page = R"(
app chrome com.google.Chrome
  window w "Standup"
    page p https://meet.google.com/abc-defg-hij
      button b "Leave call"
      text "Hello"
front chrome
end 1h
)";

struct ElementReading : SteppedDesktop {
  ElementReading() {
    play(page);
    pool = standins::openPool();
  }
  ~ElementReading() override { standins::closePool(pool); }

  void* pool = nullptr;

  static Element application() { return platform::applicationElement(101, 0.2); }
  static Element window() {
    return std::get<std::vector<Element>>(platform::readAttribute(application(), "AXWindows").value)
        .at(0);
  }
  static std::vector<Element> children(const Element& element) {
    return std::get<std::vector<Element>>(platform::readAttribute(element, "AXChildren").value);
  }
};

// A value in words.
std::string told(const Reading& reading) {
  struct Teller {
    std::string operator()(std::monostate) const { return "nothing"; }
    std::string operator()(const std::string& text) const { return "text " + text; }
    std::string operator()(const platform::Address& address) const {
      return "address " + address.text;
    }
    std::string operator()(bool flag) const { return flag ? "true" : "false"; }
    std::string operator()(const Element& element) const {
      return element.reference ? "element" : "no element";
    }
    std::string operator()(const std::vector<Element>& elements) const {
      return std::to_string(elements.size()) + " elements";
    }
    std::string operator()(platform::OtherType) const { return "another type"; }
  };
  return std::to_string(reading.code) + " " + std::visit(Teller(), reading.value);
}

Object* someElement() {
  return standins::made(standins::ElementHandle{"app:101/w"});
}

TEST_F(ElementReading, EveryAnswerIsOneValueOrOneCode) {
  struct Row {
    const char* sentence;
    std::int32_t code;
    std::function<Object*()> value;
    const char* told;
  };
  using standins::madeList;
  using standins::madeNumber;
  using standins::madeText;
  const char* address = "https://meet.google.com/abc-defg-hij";
  for (const Row& row : std::vector<Row>{
           {"a text", 0, [] { return madeText("Leave call"); }, "0 text Leave call"},
           {"an empty text", 0, [] { return madeText(""); }, "0 text "},
           {"a text with a lone surrogate", 0,
            [] { return standins::made(standins::Text{u"a\xD83D"}); }, "0 text a\xEF\xBF\xBD"},
           {"success with NULL", 0, [] { return nullptr; }, "0 nothing"},
           {"true", 0, [] { return standins::flagObject(true); }, "0 true"},
           {"false", 0, [] { return standins::flagObject(false); }, "0 false"},
           {"the number 1, which is no Boolean", 0, [] { return madeNumber(1); }, "0 another type"},
           {"the number 0", 0, [] { return madeNumber(0); }, "0 another type"},
           {"a point", 0, [] { return standins::made(standins::Geometry{}); }, "0 another type"},
           {"a dictionary", 0, [] { return standins::made(standins::Dictionary{}); },
            "0 another type"},
           {"an address", 0, [&] { return standins::madeUrl(address, address); },
            "0 address https://meet.google.com/abc-defg-hij"},
           {"a relative address", 0, [&] { return standins::madeUrl("abc-defg-hij", address); },
            "0 address https://meet.google.com/abc-defg-hij"},
           {"an address as text", 0, [&] { return madeText(address); },
            "0 text https://meet.google.com/abc-defg-hij"},
           {"an address without absolute form", 0, [] { return standins::madeUrl("x", ""); },
            "0 another type"},
           {"an element", 0, someElement, "0 element"},
           {"an empty list", 0, [] { return madeList({}); }, "0 0 elements"},
           {"a list of elements", 0,
            [] {
              return madeList({someElement(), someElement()});
            },
            "0 2 elements"},
           {"a list that begins with a text", 0,
            [] {
              return madeList({madeText("x"), someElement()});
            },
            "0 another type"},
           {"a list that ends with a number", 0,
            [] {
              return madeList({someElement(), madeNumber(1)});
            },
            "0 another type"},
           {"a list of texts", 0, [] { return madeList({madeText("x")}); }, "0 another type"},
           {"a list with a hole", 0,
            [] {
              return madeList({someElement(), nullptr});
            },
            "0 another type"},
           {"failure", -25200, {}, "-25200 nothing"},
           {"an illegal argument", -25201, {}, "-25201 nothing"},
           {"an invalid element", -25202, {}, "-25202 nothing"},
           {"cannot complete", -25204, {}, "-25204 nothing"},
           {"unsupported", -25205, {}, "-25205 nothing"},
           {"not implemented", -25208, {}, "-25208 nothing"},
           {"disabled", -25211, {}, "-25211 nothing"},
           {"no value", -25212, {}, "-25212 nothing"},
           {"a failure beside a text", -25200, [] { return madeText("x"); }, "-25200 nothing"},
           {"a failure beside an element", -25212, someElement, "-25212 nothing"},
           {"a failure beside a list", -25204, [] { return madeList({someElement()}); },
            "-25204 nothing"},
       }) {
    desktop().attributeFaults[{"app:101", "AXWindows"}] = {row.code, row.value, {}};
    EXPECT_EQ(told(platform::readAttribute(application(), "AXWindows")), row.told) << row.sentence;
    EXPECT_EQ(standins::heldReferences(), 0) << row.sentence;
  }
}

TEST_F(ElementReading, WhatCannotBeAskedIsAnIllegalArgument) {
  EXPECT_EQ(told(platform::readAttribute({}, "AXRole")), "-25201 nothing");
  EXPECT_EQ(platform::setAttribute({}, "AXEnhancedUserInterface", true), code::illegalArgument);
  EXPECT_EQ(told(platform::readAttribute(application(), "AX\xFF")), "-25201 nothing");
  EXPECT_EQ(platform::setAttribute(application(), "AX\xFF", true), code::illegalArgument);
  desktop().recordMessages = true;
  EXPECT_TRUE(desktop().messages.empty());
}

TEST_F(ElementReading, EveryElementThatIsReadWaitsNoLongerThanItsApplication) {
  const Element p = children(window()).at(0);
  desktop().attributeFaults[{"", "AXTitle"}].delay = 10;
  desktop().attributeFaults[{"app:101", "AXFocusedWindow"}].delay = 0;
  const Element focused =
      std::get<Element>(platform::readAttribute(application(), "AXFocusedWindow").value);
  for (const Element& element : {application(), window(), p, children(p).at(0), focused}) {
    const double start = desktop().uptime;
    EXPECT_EQ(platform::readAttribute(element, "AXTitle").code, code::cannotComplete);
    EXPECT_NEAR(desktop().uptime - start, 0.2, 1e-9);
  }
  EXPECT_EQ(desktop().messagesWithoutTimeout, 0);
}

TEST_F(ElementReading, AnAnswerWithinTheTimeOutCostsWhatItTakes) {
  for (const double delay : {0.0, 0.05, 0.2}) {
    desktop().attributeFaults[{"app:101/w", "AXTitle"}].delay = delay;
    const Element element = window();
    const double start = desktop().uptime;
    EXPECT_EQ(told(platform::readAttribute(element, "AXTitle")), "0 text Standup");
    EXPECT_NEAR(desktop().uptime - start, delay, 1e-9);
  }
}

TEST_F(ElementReading, EachApplicationHasTheTimeOutThatItWasOpenedWith) {
  desktop().attributeFaults[{"", "AXRole"}].delay = 10;
  const Element patient = platform::applicationElement(101, 0.7);
  const Element window =
      std::get<std::vector<Element>>(platform::readAttribute(patient, "AXWindows").value).at(0);
  const double start = desktop().uptime;
  (void)platform::readAttribute(window, "AXRole");
  EXPECT_NEAR(desktop().uptime - start, 0.7, 1e-9);
}

TEST_F(ElementReading, OneElementIsEqualToItselfByHoweverManyReferences) {
  const Element one = window();
  const Element other = window();
  EXPECT_NE(one.reference, other.reference);
  EXPECT_NE(one.reference->element.get(), other.reference->element.get());
  EXPECT_EQ(one, other);
  EXPECT_EQ(hashOf(one), hashOf(other));
  EXPECT_FALSE(one == application());
  EXPECT_FALSE(one == children(one).at(0));
  EXPECT_FALSE(one == Element());
  EXPECT_FALSE(Element() == one);
  EXPECT_EQ(Element(), Element());
  EXPECT_EQ(hashOf(Element()), hashOf(Element()));
}

TEST_F(ElementReading, AnElementThatIsGoneKeepsItsIdentityAndSaysSo) {
  const Element one = window();
  const Element other = window();
  desktop().answers.erase("app:101/w");
  EXPECT_EQ(platform::readAttribute(one, "AXRole").code, code::invalidElement);
  EXPECT_EQ(one, other);
  desktop().answers.clear();
  EXPECT_EQ(platform::readAttribute(one, "AXRole").code, code::cannotComplete)
      << "nobody answers for an application that has quit";
}

TEST_F(ElementReading, AHandleIsOneReferenceHoweverOftenItIsCopied) {
  const Element one = window();
  const std::vector<Element> copies(100, one);
  EXPECT_EQ(standins::heldReferences(), 1);
}

TEST_F(ElementReading, SettingGivesItsCode) {
  desktop().recordMessages = true;
  const Element element = application();
  EXPECT_EQ(platform::setAttribute(element, "AXEnhancedUserInterface", true), code::success);
  EXPECT_EQ(platform::setAttribute(element, "AXEnhancedUserInterface", false), code::success);
  EXPECT_EQ(desktop().messages,
            (std::vector<std::string>{"set app:101 AXEnhancedUserInterface",
                                      "clear app:101 AXEnhancedUserInterface"}));
  desktop().setCode = -25208;
  EXPECT_EQ(platform::setAttribute(element, "AXEnhancedUserInterface", true), -25208);
}

TEST_F(ElementReading, AProcessIdThatIsNoneHasAnElementThatNobodyAnswersFor) {
  for (const std::int32_t pid : {-1, 0, 7, std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(platform::readAttribute(platform::applicationElement(pid, 0.2), "AXRole").code,
              code::cannotComplete);
  }
}

}  // namespace
}  // namespace callmonitor::macos
