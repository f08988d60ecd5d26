#include "platform/linux/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

struct Case {
  std::string name;
  std::string input;
  std::string expected;
};

const std::string replaced = "\xEF\xBF\xBD";

TEST(RepairedUtf8, RepairsExactlyWhatIsIllFormed) {
  const std::vector<Case> cases{
      {"nothing stays nothing", "", ""},
      {"well-formed text of every length is unchanged", "a\u00e9\u20ac\U0001F600",
       "a\u00e9\u20ac\U0001F600"},
      {"a lone continuation byte is one replacement", "a\x80z", "a" + replaced + "z"},
      {"a byte that begins nothing is one replacement", "\xFF", replaced},
      {"an overlong slash is no slash", "\xC0\xAF", replaced + replaced},
      {"an overlong form of three bytes is refused byte by byte", "\xE0\x80\xAF",
       replaced + replaced + replaced},
      {"a surrogate is refused byte by byte", "\xED\xA0\x80", replaced + replaced + replaced},
      {"a code point above the last is refused byte by byte", "\xF4\x90\x80\x80",
       replaced + replaced + replaced + replaced},
      {"the highest code point stands", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
      {"a sequence that breaks off is one replacement", "a\xE2\x82z", "a" + replaced + "z"},
      {"a sequence that the text's end cuts is one replacement", "a\xF0\x9F\x98", "a" + replaced},
  };
  for (const Case& each : cases) EXPECT_EQ(repairedUtf8(each.input), each.expected) << each.name;
}

TEST(Utf8FromLatin1, WritesEveryByteAsItsOwnCharacter) {
  EXPECT_EQ(utf8FromLatin1("caf\xE9 \xFF"), "caf\u00e9 \u00ff");
}

}  // namespace
}  // namespace callmonitor::platform
