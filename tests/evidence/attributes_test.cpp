// What the readers of single attributes make of every answer.
#include "evidence/attributes.h"

#include <gtest/gtest.h>

#include "platform/scripted/desktop.h"

namespace callmonitor {
namespace {

using platform::Address;
using platform::OtherType;
using platform::Reading;

struct AnswerCase {
  std::string_view sentence;
  Reading reading;
  std::string text;
  bool flagOrFalse;
  bool flagOrTrue;
  std::size_t elements;
  std::optional<std::string> address;
};

TEST(Attributes, AreReadByTypeAndCode) {
  const Element one = scripted::element("one");
  const std::vector<Element> two{one, scripted::element("two")};
  const AnswerCase cases[] = {
      {"a text", {0, "hello"}, "hello", false, true, 0, "hello"},
      {"an empty text", {0, ""}, "", false, true, 0, ""},
      {"the Boolean true", {0, true}, "", true, true, 0, std::nullopt},
      {"the Boolean false", {0, false}, "", false, false, 0, std::nullopt},
      {"elements", {0, two}, "", false, true, 2, std::nullopt},
      {"no elements", {0, std::vector<Element>{}}, "", false, true, 0, std::nullopt},
      {"one element is no list", {0, one}, "", false, true, 0, std::nullopt},
      {"an address is no text", {0, Address{"a:b"}}, "", false, true, 0, "a:b"},
      {"another type", {0, OtherType{}}, "", false, true, 0, std::nullopt},
      {"nothing", {0, {}}, "", false, true, 0, std::nullopt},
      {"a text that looks like a Boolean", {0, "true"}, "true", false, true, 0, "true"},
      {"a failure", {-25200, {}}, "", false, true, 0, std::nullopt},
      {"a text beside a failure does not count", {-25200, "x"}, "", false, true, 0, std::nullopt},
      {"a true beside a failure does not count", {-25204, true}, "", false, true, 0, std::nullopt},
      {"elements beside a failure do not count", {-25202, two}, "", false, true, 0, std::nullopt},
      {"an unsupported attribute", {-25205, {}}, "", false, true, 0, std::nullopt},
      {"no value", {-25212, {}}, "", false, true, 0, std::nullopt},
  };
  for (const AnswerCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(textIn(row.reading), row.text);
    EXPECT_EQ(flagIn(row.reading, false), row.flagOrFalse);
    EXPECT_EQ(flagIn(row.reading, true), row.flagOrTrue);
    EXPECT_EQ(elementsIn(row.reading).size(), row.elements);
    EXPECT_EQ(addressIn(row.reading), row.address);
  }
}

TEST(Attributes, AreAbsentByTwoCodesOnly) {
  EXPECT_TRUE(absentAttribute(-25205));
  EXPECT_TRUE(absentAttribute(-25212));
  for (const std::int32_t code : {0, -25200, -25201, -25202, -25204, -25206, -25211, 1}) {
    SCOPED_TRACE(code);
    EXPECT_FALSE(absentAttribute(code));
  }
}

TEST(Attributes, OfLiveElementsAreTextOrEmpty) {
  scripted::reset();
  scripted::desktop().elements["e"] = {{"AXTitle", scripted::textAnswer("Meeting")},
                                       {"AXValue", scripted::flagAnswer(true)},
                                       {"AXDescription", scripted::codeAnswer(-25200)}};
  const Element element = scripted::element("e");
  EXPECT_EQ(text(element, "AXTitle"), "Meeting");
  EXPECT_EQ(text(element, "AXValue"), "");
  EXPECT_EQ(text(element, "AXDescription"), "");
  EXPECT_EQ(text(element, "AXRole"), "");
  EXPECT_EQ(text(scripted::element("gone"), "AXTitle"), "");
  EXPECT_EQ(text(Element(), "AXTitle"), "");
}

}  // namespace
}  // namespace callmonitor
