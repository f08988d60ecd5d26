// One place writes and reads JSON; readers of the stream and launch pages rest on these rows.
#include "text/json.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

namespace callmonitor {
namespace {

struct WritingCase {
  std::string_view sentence;
  Record record;
  std::optional<std::string> line;
};

TEST(Json, WritesOneCompactLine) {
  const WritingCase cases[] = {
      {"a record without fields is an empty object", {}, "{}"},
      {"keys stand in ascending order",
       {{"version", std::int64_t{1}}, {"kind", "client"}, {"Zebra", true}},
       R"({"Zebra":true,"kind":"client","version":1})"},
      {"null is written", {{"title", nullptr}}, R"({"title":null})"},
      {"both Booleans are words", {{"a", true}, {"b", false}}, R"({"a":true,"b":false})"},
      {"a whole number has no fraction",
       {{"observedAt", std::int64_t{1700000000123}}},
       R"({"observedAt":1700000000123})"},
      {"the whole range of 64 bits is kept",
       {{"a", std::numeric_limits<std::int64_t>::min()},
        {"b", std::numeric_limits<std::int64_t>::max()}},
       R"({"a":-9223372036854775808,"b":9223372036854775807})"},
      {"a list of texts keeps its order",
       {{"a", std::vector<std::string>{"z", "a", ""}}},
       R"({"a":["z","a",""]})"},
      {"an empty list stays a list", {{"a", std::vector<std::string>{}}}, R"({"a":[]})"},
      {"text beyond ASCII stays as it is", {{"a", "Ä…😀"}}, "{\"a\":\"Ä…😀\"}"},
  };
  for (const WritingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(serialized(row.record), row.line);
  }
}

TEST(Json, EscapesEverySlash) {
  const WritingCase cases[] = {
      {"a slash in a text", {{"a", "https://h/p"}}, R"({"a":"https:\/\/h\/p"})"},
      {"a slash in a list", {{"a", std::vector<std::string>{"/"}}}, R"({"a":["\/"]})"},
      {"a slash in a key", {{"a/b", true}}, R"({"a\/b":true})"},
      {"a slash behind a backslash", {{"a", "\\/"}}, R"({"a":"\\\/"})"},
  };
  for (const WritingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(serialized(row.record), row.line);
  }
}

TEST(Json, EscapesQuotesBackslashesAndControlCharacters) {
  const WritingCase cases[] = {
      {"a quote", {{"a", "\""}}, R"({"a":"\""})"},
      {"a backslash", {{"a", "\\"}}, R"({"a":"\\"})"},
      {"a line break", {{"a", "\n"}}, R"({"a":"\n"})"},
      {"a return", {{"a", "\r"}}, R"({"a":"\r"})"},
      {"a tab", {{"a", "\t"}}, R"({"a":"\t"})"},
  };
  for (const WritingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(serialized(row.record), row.line);
  }
}

TEST(Json, KeepsEveryControlCharacterOutOfTheLineAndInTheText) {
  for (char c = 0; c < 0x20; ++c) {
    SCOPED_TRACE(static_cast<int>(c));
    const std::string text = std::string("a") + c + "b";
    const std::optional<std::string> line = serialized({{"t", text}});
    ASSERT_TRUE(line);
    for (const char written : *line) EXPECT_GE(static_cast<unsigned char>(written), 0x20);
    EXPECT_EQ(nlohmann::json::parse(*line)["t"], text);
  }
}

TEST(Json, WritesDoublesThatReadBackAsTheSameDouble) {
  const double cases[] = {0.1,
                          1.0 / 3,
                          -2.5,
                          1700000000.123456,
                          5e-324,
                          std::numeric_limits<double>::min(),
                          std::numeric_limits<double>::max(),
                          9007199254740993.0,
                          1e21,
                          0};
  for (const double number : cases) {
    SCOPED_TRACE(number);
    const std::optional<std::string> line = serialized({{"n", number}});
    ASSERT_TRUE(line);
    EXPECT_EQ(nlohmann::json::parse(*line)["n"].get<double>(), number);
  }
}

TEST(Json, RefusesWhatJsonCannotHold) {
  const WritingCase cases[] = {
      {"not a number", {{"n", std::numeric_limits<double>::quiet_NaN()}}, std::nullopt},
      {"infinity", {{"n", std::numeric_limits<double>::infinity()}}, std::nullopt},
      {"minus infinity", {{"n", -std::numeric_limits<double>::infinity()}}, std::nullopt},
      {"a byte that begins no character", {{"t", "a\xFFz"}}, std::nullopt},
      {"a character that is cut off", {{"t", "\xE2\x80"}}, std::nullopt},
      {"a surrogate", {{"t", "\xED\xA0\x80"}}, std::nullopt},
      {"an overlong slash", {{"t", "\xC0\xAF"}}, std::nullopt},
      {"a bad text in a list", {{"t", std::vector<std::string>{"good", "\xFF"}}}, std::nullopt},
      {"a bad key", {{"\xFF", true}}, std::nullopt},
      {"a bad text among good fields", {{"a", true}, {"t", "\xFF"}, {"z", "good"}}, std::nullopt},
  };
  for (const WritingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(serialized(row.record), row.line);
  }
}

struct MemberCase {
  std::string_view sentence;
  std::string_view json;
  std::optional<std::string> text;
};

TEST(Json, ReadsOneTextOfAnObject) {
  const MemberCase cases[] = {
      {"the member's text", R"({"u":"https://h/p"})", "https://h/p"},
      {"white space around is allowed", " \n{ \"u\" : \"x\" }\t", "x"},
      {"other members do not matter", R"({"a":[1,{"u":"no"}],"u":"yes","z":null})", "yes"},
      {"escapes are undone", R"({"u":"\/é\n"})", "/é\n"},
      {"a text may be empty", R"({"u":""})", ""},
      {"a text may hold the zero character", R"({"u":"a\u0000b"})", std::string("a\0b", 3)},
      {"the member is missing", R"({"v":"x"})", std::nullopt},
      {"keys are case-sensitive", R"({"U":"x"})", std::nullopt},
      {"a member of an inner object does not count", R"({"a":{"u":"x"}})", std::nullopt},
      {"a number is not a text", R"({"u":1})", std::nullopt},
      {"null is not a text", R"({"u":null})", std::nullopt},
      {"a list is not a text", R"({"u":["x"]})", std::nullopt},
      {"the top level is a list", R"([{"u":"x"}])", std::nullopt},
      {"the top level is a text", R"("u")", std::nullopt},
      {"nothing is not JSON", "", std::nullopt},
      {"a cut-off object is not JSON", R"({"u":"x")", std::nullopt},
      {"text behind the object is not JSON", R"({"u":"x"}x)", std::nullopt},
      {"a zero byte behind the object is not JSON", std::string_view("{\"u\":\"x\"}\0", 10),
       std::nullopt},
      {"bytes that are not UTF-8 are not JSON", "{\"u\":\"\xFF\"}", std::nullopt},
  };
  for (const MemberCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(stringMember(row.json, "u"), row.text);
  }
}

}  // namespace
}  // namespace callmonitor
