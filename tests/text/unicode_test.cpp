// The Unicode operations under every label rule: lower-casing, white space, characters.
#include "text/unicode.h"

#include <gtest/gtest.h>

#include <array>

namespace callmonitor {
namespace {

std::string repeated(std::string_view piece, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

struct TextCase {
  std::string_view sentence;
  std::string text;
  std::string expected;
};

TEST(Unicode, LowerCasesFully) {
  const TextCase cases[] = {
      {"nothing stays nothing", "", ""},
      {"ASCII letters", "AZ az 09 [@`{", "az az 09 [@`{"},
      {"letters with marks", "ÀÉÎÕÜ", "àéîõü"},
      {"a dotted capital I becomes an i and a combining dot", "İ", "i\xCC\x87"},
      {"a capital sharp s", "ẞ", "ß"},
      {"a small sharp s stays", "Straße", "straße"},
      {"a sigma at the end of a word is the final one", "ΟΔΟΣ", "οδος"},
      {"a sigma inside a word is not", "ΣΟΦΟΣ ΣΑ", "σοφος σα"},
      {"letters beyond the first plane", "𐐀", "𐐨"},
      {"ASCII capitals beside other letters", "LEAVE É", "leave é"},
      {"the Kelvin sign becomes a k", "\xE2\x84\xAA", "k"},
      {"bytes that are not UTF-8 count as the replacement character", "A\xFFZ", "a\xEF\xBF\xBDz"},
  };
  for (const TextCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(lowerCased(row.text), row.expected);
  }
}

TEST(Unicode, EscapesWhatControlsALine) {
  const TextCase cases[] = {
      {"nothing stays nothing", "", ""},
      {"letters of every length", "aé会\U0001F4DE", "aé会\U0001F4DE"},
      {"what ends a line", "a\r\nb", "a\\u{D}\\u{A}b"},
      {"a zero byte", std::string("a\0b", 3), "a\\u{0}b"},
      {"the last control of one byte", "\x7F", "\\u{7F}"},
      {"the first and the last of two", "\u0080\u009F", "\\u{80}\\u{9F}"},
      {"a no-break space is none", "\u00A0", "\u00A0"},
      {"line and paragraph separators", "\u2028\u2029", "\\u{2028}\\u{2029}"},
      {"all that turns the direction of writing",
       "\u061C\u200E\u200F\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069",
       "\\u{61C}\\u{200E}\\u{200F}\\u{202A}\\u{202B}\\u{202C}\\u{202D}\\u{202E}\\u{2066}\\u{2067}"
       "\\u{2068}\\u{2069}"},
      {"a joiner of letters is none", "\u200D", "\u200D"},
      {"bytes that are not UTF-8 count as the replacement character", "\xFF", "\uFFFD"},
  };
  for (const TextCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(controlsEscaped(row.text), row.expected);
  }
}

std::string joined(std::string_view first, std::string_view second, std::string_view third) {
  return std::string(first).append(second).append(third);
}

// Every character with the White_Space property.
constexpr std::array<std::string_view, 25> whiteSpace{
    "\x09",         "\x0A",         "\x0B",         "\x0C",         "\x0D",
    "\x20",         "\xC2\x85",     "\xC2\xA0",     "\xE1\x9A\x80", "\xE2\x80\x80",
    "\xE2\x80\x81", "\xE2\x80\x82", "\xE2\x80\x83", "\xE2\x80\x84", "\xE2\x80\x85",
    "\xE2\x80\x86", "\xE2\x80\x87", "\xE2\x80\x88", "\xE2\x80\x89", "\xE2\x80\x8A",
    "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80"};

TEST(Unicode, EveryWhiteSpaceCharacterPartsWords) {
  for (const std::string_view space : whiteSpace) {
    SCOPED_TRACE(testing::PrintToString(std::string(space)));
    const std::string two = std::string(space) + std::string(space);
    EXPECT_EQ(singleSpaced(joined("leave", space, "call")), "leave call");
    EXPECT_EQ(singleSpaced(joined("leave", two, "call")), "leave call");
    EXPECT_EQ(singleSpaced(joined(space, "leave", space)), "leave");
    EXPECT_EQ(singleSpaced(space), "");
    EXPECT_EQ(singleSpaced(joined("é", space, "é")), "é é");
  }
}

TEST(Unicode, JoinsWordsWithSingleSpaces) {
  const TextCase cases[] = {
      {"nothing stays nothing", "", ""},
      {"a mixed run becomes one space", "a \t\xC2\xA0\xE2\x80\xA8\n b", "a b"},
      {"punctuation and symbols stay", " you\xE2\x80\x99ve  left (⌘ + w)! ",
       "you\xE2\x80\x99ve left (⌘ + w)!"},
      {"a zero-width space is no white space",
       "a\xE2\x80\x8B"
       "b",
       "a\xE2\x80\x8B"
       "b"},
      {"a byte order mark is no white space",
       "a\xEF\xBB\xBF"
       "b",
       "a\xEF\xBB\xBF"
       "b"},
      {"a Mongolian vowel separator is no white space",
       "a\xE1\xA0\x8E"
       "b",
       "a\xE1\xA0\x8E"
       "b"},
      {"an information separator is no white space",
       "a\x1F"
       "b",
       "a\x1F"
       "b"},
      {"letters beyond the first plane stay whole", "😀  😀", "😀 😀"},
      {"words of one letter", " a  b c ", "a b c"},
  };
  for (const TextCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(singleSpaced(row.text), row.expected);
  }
}

struct ClusterCase {
  std::string_view sentence;
  std::string_view character;
};

// What a person sees as one character, in more than one code point.
constexpr ClusterCase clusters[] = {
    {"a letter", "a"},
    {"a letter of two bytes", "é"},
    {"a letter with a combining mark", "e\xCC\x81"},
    {"a letter with two combining marks", "e\xCC\x81\xCC\xA3"},
    {"an emoji", "😀"},
    {"a thumb with a skin tone", "👍🏽"},
    {"a family joined by zero-width joiners", "👨‍👩‍👧‍👦"},
    {"a flag of two regional indicators", "🇩🇪"},
    {"a Hangul syllable of three jamo", "\xE1\x84\x92\xE1\x85\xA1\xE1\x86\xAB"},
    {"a return with its line feed", "\r\n"},
};

TEST(Unicode, CountsUserPerceivedCharacters) {
  for (const ClusterCase& row : clusters) {
    SCOPED_TRACE(row.sentence);
    EXPECT_TRUE(shorterThan(repeated(row.character, 199), 200));
    EXPECT_FALSE(shorterThan(repeated(row.character, 200), 200));
    EXPECT_FALSE(shorterThan(repeated(row.character, 201), 200));
  }
  EXPECT_TRUE(shorterThan("", 1));
  EXPECT_FALSE(shorterThan("", 0));
}

TEST(Unicode, CutsBetweenUserPerceivedCharacters) {
  for (const ClusterCase& row : clusters) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(firstCharacters(repeated(row.character, 201), 200), repeated(row.character, 200));
    EXPECT_EQ(firstCharacters(repeated(row.character, 200), 200), repeated(row.character, 200));
    EXPECT_EQ(firstCharacters(repeated(row.character, 3), 200), repeated(row.character, 3));
    EXPECT_EQ(firstCharacters(repeated(row.character, 3), 4), repeated(row.character, 3));
    EXPECT_EQ(firstCharacters(std::string(row.character) + "b", 1), row.character);
    EXPECT_EQ(firstCharacters(row.character, 0), "");
  }
}

TEST(Unicode, MeasuresTextInUtf16Units) {
  EXPECT_EQ(utf16Length(""), 0U);
  EXPECT_EQ(utf16Length("abc"), 3U);
  EXPECT_EQ(utf16Length("é"), 1U);
  EXPECT_EQ(utf16Length("…"), 1U);
  EXPECT_EQ(utf16Length("😀"), 2U);
  EXPECT_EQ(utf16Length("e\xCC\x81"), 2U);
}

struct ValidityCase {
  std::string_view sentence;
  std::string bytes;
  bool valid;
};

TEST(Unicode, TellsWellFormedBytes) {
  const ValidityCase cases[] = {
      {"nothing", "", true},
      {"ASCII", "abc\x7F", true},
      {"the zero character", std::string("a\0b", 3), true},
      {"two, three and four bytes", "é…😀", true},
      {"the last code point", "\xF4\x8F\xBF\xBF", true},
      {"a code point that is no character", "\xEF\xBF\xBF", true},
      {"beyond the last code point", "\xF4\x90\x80\x80", false},
      {"a continuation byte alone", "\x80", false},
      {"a lead byte alone", "a\xC3", false},
      {"a cut-off character of three bytes", "\xE2\x82", false},
      {"a cut-off character of four bytes", "\xF0\x9F\x98", false},
      {"an overlong zero", "\xC0\x80", false},
      {"an overlong character of three bytes", "\xE0\x80\xAF", false},
      {"a high surrogate", "\xED\xA0\x80", false},
      {"a low surrogate", "\xED\xBF\xBF", false},
      {"a byte that UTF-8 never holds", "a\xFE", false},
      {"a bad byte behind good characters", "é\xFF", false},
  };
  for (const ValidityCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(validUtf8(row.bytes), row.valid);
  }
}

}  // namespace
}  // namespace callmonitor
