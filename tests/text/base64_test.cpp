// Base64 guards the door to launch pages: what it takes decides which pages name a meeting.
#include "text/base64.h"

#include <gtest/gtest.h>

namespace callmonitor {
namespace {

struct DecodingCase {
  std::string_view sentence;
  std::string_view text;
  std::optional<std::string> bytes;
};

TEST(Base64, DecodesTheStandardVectors) {
  const DecodingCase cases[] = {
      {"nothing", "", ""},
      {"one byte takes two characters and two pads", "Zg==", "f"},
      {"two bytes take three characters and one pad", "Zm8=", "fo"},
      {"three bytes take four characters", "Zm9v", "foo"},
      {"four bytes", "Zm9vYg==", "foob"},
      {"five bytes", "Zm9vYmE=", "fooba"},
      {"six bytes", "Zm9vYmFy", "foobar"},
      {"plus and slash stand for 62 and 63", "+/+/", "\xFB\xFF\xBF"},
      {"the zero byte is a byte like any other", "AAAA", std::string(3, '\0')},
  };
  for (const DecodingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(base64Decoded(row.text), row.bytes);
  }
}

TEST(Base64, IgnoresBitsLeftOverBeforeThePadding) {
  const DecodingCase cases[] = {
      {"four pad bits that are set", "Zh==", "f"},
      {"all four pad bits set", "Zv==", "f"},
      {"two pad bits that are set", "Zm9=", "fo"},
      {"both pad bits set", "Zm+=", "fo"},
  };
  for (const DecodingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(base64Decoded(row.text), row.bytes);
  }
}

TEST(Base64, RefusesWhateverIsNotStandard) {
  const DecodingCase cases[] = {
      {"a length of one", "Z", std::nullopt},
      {"padding that is missing", "Zg", std::nullopt},
      {"padding that is half there", "Zg=", std::nullopt},
      {"a length that is no multiple of four", "Zm9vZ", std::nullopt},
      {"three pads", "A===", std::nullopt},
      {"four pads alone", "====", std::nullopt},
      {"four surplus pads behind a full group", "Zm9v====", std::nullopt},
      {"padding in the middle of the text", "Zg==Zm9v", std::nullopt},
      {"padding in the middle of a group", "Z=9v", std::nullopt},
      {"a pad before the last character", "Zm=v", std::nullopt},
      {"the minus of the URL-safe alphabet", "-/+/", std::nullopt},
      {"the underscore of the URL-safe alphabet", "+_+/", std::nullopt},
      {"a space", "Zm 9", std::nullopt},
      {"a line break at the end", "Zm9\n", std::nullopt},
      {"a character beyond ASCII", "Zm\xC3\xA9", std::nullopt},
      {"a zero byte", std::string_view("Zm9\0", 4), std::nullopt},
  };
  for (const DecodingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(base64Decoded(row.text), row.bytes);
  }
}

}  // namespace
}  // namespace callmonitor
