// Regular expressions as the rules need them: ICU's syntax, a search, no options.
#include "text/pattern.h"

#include <gtest/gtest.h>

namespace callmonitor {
namespace {

struct SearchCase {
  std::string_view sentence;
  std::string_view expression;
  std::string_view text;
  bool found;
};

TEST(Pattern, SearchesTheWholeText) {
  const SearchCase cases[] = {
      {"an expression without anchors is found anywhere", "(camera|video)", "no video here", true},
      {"what is not there is not found", "(camera|video)", "audio", false},
      {"case matters", "video", "Video", false},
      {"marks matter", "cafe", "café", false},
      {"a start anchor holds", "^join", "please join", false},
      {"an end anchor holds", "join$", "join now", false},
      {"an anchored expression that needs characters is not in an empty text", "^join$", "", false},
      {"an expression that needs none is in an empty text", "^$", "", true},
      {"a dollar matches before one line feed at the end", "^join$", "join\n", true},
      {"before a return at the end", "^join$", "join\r", true},
      {"before a return and its line feed", "^join$", "join\r\n", true},
      {"before a next line character", "^join$", "join\xC2\x85", true},
      {"before a line separator", "^join$", "join\xE2\x80\xA8", true},
      {"not before two line feeds", "^join$", "join\n\n", false},
      {"not before a line feed in the middle", "^join$", "join\nnow", false},
      {"a caret matches at the very start only", "^now", "join\nnow", false},
      {"an ellipsis in a class is one character", "^a[.!…]$", "a…", true},
      {"a typographic apostrophe in a class is one character", "^you['’]ve$", "you’ve", true},
      {"a bounded repetition takes exactly so many", R"(^a\.{3}$)", "a..", false},
      {"a character of four bytes is one character", "^.$", "😀", true},
      {"the zero character does not end a text", "^a.b$", std::string_view("a\0b", 3), true},
  };
  for (const SearchCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(Pattern(row.expression).foundIn(row.text), row.found);
  }
}

struct GroupCase {
  std::string_view sentence;
  std::string_view expression;
  std::string_view text;
  std::optional<std::string> group;
};

TEST(Pattern, GivesTheFirstGroupThatTookPart) {
  const GroupCase cases[] = {
      {"the only group", "^/j/([0-9]+)$", "/j/123", "123"},
      {"the first of two", "(a)(b)", "ab", "a"},
      {"a group that took no part is passed over", "^(?:x(a)|y(b))$", "yb", "b"},
      {"a group that took part may be empty", "^(x?)(y)$", "y", ""},
      {"the first match counts", "([0-9]+)", "a12b34", "12"},
      {"no match gives none", "^(a)$", "b", std::nullopt},
      {"a match without groups gives none", "^(?:a)$", "a", std::nullopt},
      {"a match in which no group took part gives none", "^a(b)?$", "a", std::nullopt},
      {"the zero character stays in the group", "^(.*)$", std::string_view("a\0b", 3),
       std::string("a\0b", 3)},
      {"text beyond ASCII stays as it was", "^<(.*)>$", "<é😀>", "é😀"},
  };
  for (const GroupCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(Pattern(row.expression).firstGroup(row.text), row.group);
  }
}

TEST(Pattern, TakesEveryMatchOut) {
  EXPECT_EQ(Pattern("b").removedFrom("abcb"), "ac");
  EXPECT_EQ(Pattern("b").removedFrom("axc"), "axc");
  EXPECT_EQ(Pattern("é+").removedFrom("café😀é"), "caf😀");
  EXPECT_EQ(Pattern("b").removedFrom(""), "");
}

TEST(Pattern, AnswersAfreshForEveryText) {
  const Pattern pattern("^(a+)$");
  EXPECT_EQ(pattern.firstGroup("aaa"), "aaa");
  EXPECT_FALSE(pattern.foundIn("b"));
  EXPECT_EQ(pattern.firstGroup("a"), "a");
}

TEST(PatternDeathTest, AnExpressionThatTheEngineRejectsEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(Pattern("(unclosed"), "");
}

// A label that takes a search a time that grows with the square of its length.
TEST(Pattern, ASearchThatWouldNotEndFindsNothing) {
  const Pattern shortcut(R"(\s*\([^)]*\)\s*$)");
  const std::string hostile(200000, '(');
  EXPECT_FALSE(shortcut.foundIn(hostile));
  EXPECT_EQ(shortcut.removedFrom(hostile), hostile);
  EXPECT_EQ(Pattern(R"((\([^)]*\))$)").firstGroup(hostile), std::nullopt);
  EXPECT_EQ(shortcut.removedFrom("mute (m)"), "mute") << "the next text is judged as ever";
}

TEST(Pattern, FindsAWordAtTheEndOfALongText) {
  const Pattern word("(^|[^a-z])(chat|captions)([^a-z]|$)");
  EXPECT_TRUE(word.foundIn(std::string(50000, 'x') + " chat"));
  EXPECT_TRUE(word.foundIn("chat " + std::string(50000, 'x')));
}

}  // namespace
}  // namespace callmonitor
