// Plain values out of the frameworks' objects.
#include "platform/macos/core_values.h"

#include <gtest/gtest.h>

#include <vector>

#include "macos/standins/objects.h"

namespace callmonitor::platform {
namespace {

using standins::Object;

// A reference of the test's own to a new object.
Owned<CFTypeRef> owned(Object* object) {
  return Owned<CFTypeRef>::taken(standins::handedOut(object));
}

struct CoreValues : testing::Test {
  ~CoreValues() override {
    EXPECT_EQ(standins::heldReferences(), 0);
    EXPECT_EQ(standins::livingObjects(), 0);
  }
};

TEST_F(CoreValues, TextIsValidUtf8WhateverTheString) {
  struct Row {
    const char* sentence;
    std::u16string units;
    std::string text;
  };
  const std::string longText(2000, 'x');
  for (const Row& row : std::vector<Row>{
           {"an empty string", u"", ""},
           {"plain letters", u"Leave call", "Leave call"},
           {"letters of every length in bytes", u"a\u00E9\u20AC\U0001F600",
            "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
           {"a zero in the middle", std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
           {"a lone high surrogate", u"a\xD83D", "a\xEF\xBF\xBD"},
           {"a lone low surrogate", u"\xDE00z", "\xEF\xBF\xBDz"},
           {"surrogates in the wrong order", u"\xDE00\xD83D", "\xEF\xBF\xBD\xEF\xBF\xBD"},
           {"a high surrogate before a pair", u"\xD83D\xD83D\xDE00",
            "\xEF\xBF\xBD\xF0\x9F\x98\x80"},
           {"a lone surrogate between words", u"Leave\xD83D call", "Leave\xEF\xBF\xBD call"},
           {"a string longer than one piece", std::u16string(2000, u'x'), longText},
       }) {
    const auto string = owned(standins::made(standins::Text{row.units}));
    EXPECT_EQ(textOf(string.get()), row.text) << row.sentence;
  }
}

TEST_F(CoreValues, APieceNeverCutsACharacter) {
  // The pieces of 512 bytes end within the characters of 3 and 4 bytes for one offset or another.
  for (std::size_t offset = 0; offset < 4; ++offset) {
    std::u16string units(offset, u'a');
    std::string text(offset, 'a');
    for (int i = 0; i < 400; ++i) {
      units += u"\u20AC\U0001F600";
      text += "\xE2\x82\xAC\xF0\x9F\x98\x80";
    }
    const auto string = owned(standins::made(standins::Text{units}));
    EXPECT_EQ(textOf(string.get()), text) << offset;
  }
}

TEST_F(CoreValues, AnObjectGivesAValueOfItsOwnTypeOnly) {
  struct Row {
    const char* sentence;
    Object* object;
    std::optional<std::string> text;
    std::optional<std::int64_t> number;
    std::optional<bool> flag;
    std::optional<std::string> address;
  };
  const std::string page = "https://meet.google.com/abc-defg-hij";
  for (const Row& row : std::vector<Row>{
           {"NULL", nullptr, {}, {}, {}, {}},
           {"a string", standins::madeText("1"), "1", {}, {}, {}},
           {"a number", standins::madeNumber(1), {}, 1, {}, {}},
           {"a number of zero", standins::madeNumber(0), {}, 0, {}, {}},
           {"a negative number", standins::madeNumber(-1), {}, -1, {}, {}},
           {"the largest number", standins::madeNumber(INT64_MAX), {}, INT64_MAX, {}, {}},
           {"a floating number without a fraction", standins::madeFraction(70), {}, 70, {}, {}},
           {"a floating number with a fraction", standins::madeFraction(0.5), {}, {}, {}, {}},
           {"a number that 64 bits do not hold", standins::madeFraction(1e19), {}, {}, {}, {}},
           {"true", standins::flagObject(true), {}, {}, true, {}},
           {"false", standins::flagObject(false), {}, {}, false, {}},
           {"an address", standins::madeUrl(page, page), {}, {}, {}, page},
           {"a relative address", standins::madeUrl("abc-defg-hij", page), {}, {}, {}, page},
           {"an address without absolute form", standins::madeUrl("x", ""), {}, {}, {}, {}},
           {"a list", standins::madeList({}), {}, {}, {}, {}},
           {"a point", standins::made(standins::Geometry{}), {}, {}, {}, {}},
       }) {
    const auto object = owned(row.object);
    EXPECT_EQ(textOf(object.get()), row.text) << row.sentence;
    EXPECT_EQ(wholeNumberOf(object.get()), row.number) << row.sentence;
    EXPECT_EQ(flagOf(object.get()), row.flag) << row.sentence;
    EXPECT_EQ(addressOf(object.get()), row.address) << row.sentence;
  }
}

TEST_F(CoreValues, AStringIsMadeOfValidTextOnly) {
  EXPECT_EQ(textOf(stringOf("AXRole").get()), "AXRole");
  EXPECT_EQ(textOf(stringOf("").get()), "");
  for (const char* text : {"\xFF", "a\xC3", "\xED\xA0\xBD", "\xC0\x80", "\xF4\x90\x80\x80"}) {
    EXPECT_FALSE(stringOf(text)) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace callmonitor::platform
