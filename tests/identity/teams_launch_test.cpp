// A launch page carries the meeting's address in its query: which ones are believed.
#include "identity/teams_launch.h"

#include <gtest/gtest.h>

#include "support/meeting_key.h"

namespace callmonitor {
namespace {

using test::meetingKey;

const std::string launchPage = "https://teams.microsoft.com/light-meetings/launch";
const std::string meeting = "https://teams.live.com/meet/123456789";

// Standard base64, padded.
std::string encoded(std::string_view bytes) {
  constexpr std::string_view alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= group.size() ? alphabet[bits >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

std::string unpadded(std::string text) {
  text.erase(text.find_last_not_of('=') + 1);
  return text;
}

std::string replaced(std::string_view text, char from, std::string_view to) {
  std::string result;
  for (const char c : text) {
    if (c == from) {
      result += to;
    } else {
      result += c;
    }
  }
  return result;
}

std::string payload(std::string_view address) {
  return R"({"meetingUrl":")" + std::string(address) + "\"}";
}

// The payload of a launch page as it stands in its query: the URL-safe alphabet, no padding.
std::string coords(std::string_view json) {
  return replaced(replaced(unpadded(encoded(json)), '+', "-"), '/', "_");
}

struct LaunchCase {
  std::string_view sentence;
  std::string address;
  std::optional<std::string> key;
};

void expectLaunches(const std::vector<LaunchCase>& cases) {
  for (const LaunchCase& row : cases) {
    SCOPED_TRACE(std::string(row.sentence) + ": " + row.address.substr(0, 200));
    EXPECT_EQ(meetingKey(row.address), row.key);
  }
}

TEST(TeamsLaunch, NamesTheMeetingOfItsPayload) {
  const std::string good = coords(payload(meeting));
  expectLaunches({
      {"on the work host", launchPage + "?coords=" + good, "teams:123456789"},
      {"on the consumer host", "https://teams.live.com/light-meetings/launch?coords=" + good,
       "teams:123456789"},
      {"on the cloud host", "https://teams.cloud.microsoft/light-meetings/launch?coords=" + good,
       "teams:123456789"},
      {"an escaped path", "https://teams.live.com/light-meetings/l%61unch?coords=" + good,
       "teams:123456789"},
      {"other items before and behind", launchPage + "?anon=true&coords=" + good + "&x=1",
       "teams:123456789"},
      {"an escaped name", launchPage + "?%63oords=" + good, "teams:123456789"},
      {"the first of two counts", launchPage + "?coords=" + good + "&coords=invalid",
       "teams:123456789"},
      {"other members of the payload do not matter",
       launchPage + "?coords=" + coords(R"({"a":[1],"meetingUrl":")" + meeting + R"(","z":null})"),
       "teams:123456789"},
      {"a thread",
       launchPage + "?coords=" +
           coords(payload(
               "https://teams.microsoft.com/l/meetup-join/19%3ameeting_test%40thread.v2/0")),
       "teams:19:meeting_test@thread.v2"},
      {"a consumer fragment",
       launchPage + "?coords=" + coords(payload("https://teams.live.com/v2/#/meet/abc?p=x")),
       "teams:abc"},
      {"a fragment of the launch page does not matter", launchPage + "?coords=" + good + "#x",
       "teams:123456789"},
  });
}

TEST(TeamsLaunch, NamesNothingWhereAnyStepFails) {
  const std::string good = coords(payload(meeting));
  const std::string page = launchPage + "?coords=";
  expectLaunches({
      {"a payload that is invalid", page + "invalid", std::nullopt},
      {"no query", launchPage, std::nullopt},
      {"an empty query", launchPage + "?", std::nullopt},
      {"no such item", launchPage + "?coord=" + good, std::nullopt},
      {"a name in capitals", launchPage + "?Coords=" + good, std::nullopt},
      {"an item without a value", launchPage + "?coords", std::nullopt},
      {"an empty value", page, std::nullopt},
      {"the first of two is empty", page + "&coords=" + good, std::nullopt},
      {"the first of two has no value", launchPage + "?coords&coords=" + good, std::nullopt},
      {"the first of two is invalid", page + "invalid&coords=" + good, std::nullopt},
      {"a value that does not decode", page + good + "%FF", std::nullopt},
      {"a character outside both alphabets", page + good + "!", std::nullopt},
      {"a line terminator behind the payload", page + good + "%0A", std::nullopt},
      {"base64 that is not JSON", page + coords("hello"), std::nullopt},
      {"a list", page + coords("[\"" + meeting + "\"]"), std::nullopt},
      {"a text", page + coords("\"" + meeting + "\""), std::nullopt},
      {"no member of that name", page + coords(R"({"meetingURL":")" + meeting + "\"}"),
       std::nullopt},
      {"a member that is a number", page + coords(R"({"meetingUrl":1})"), std::nullopt},
      {"a member that is null", page + coords(R"({"meetingUrl":null})"), std::nullopt},
      {"a member that is an object",
       page + coords(R"({"meetingUrl":{"meetingUrl":")" + meeting + "\"}}"), std::nullopt},
      {"bytes that are not UTF-8", page + coords(payload(meeting + "\xFF")), std::nullopt},
      {"an empty address", page + coords(payload("")), std::nullopt},
      {"a Meet address", page + coords(payload("https://meet.google.com/abc-defg-hij")),
       std::nullopt},
      {"a Zoom address", page + coords(payload("https://zoom.us/j/123456789")), std::nullopt},
      {"a Teams page without a meeting", page + coords(payload("https://teams.live.com/")),
       std::nullopt},
      {"http inside", page + coords(payload("http://teams.live.com/meet/123456789")), std::nullopt},
      {"a user inside", page + coords(payload("https://u@teams.live.com/meet/123456789")),
       std::nullopt},
      {"a look-alike inside", page + coords(payload("https://teams.live.com.example.org/meet/1")),
       std::nullopt},
      {"the zero character inside", page + coords(payload(meeting + R"(\u0000)")), std::nullopt},
      {"a launch page inside", page + coords(payload(page + good)), std::nullopt},
      {"a longer path", launchPage + "/?coords=" + good, std::nullopt},
      {"a path in capitals", "https://teams.live.com/Light-Meetings/launch?coords=" + good,
       std::nullopt},
      {"the host of Meet", "https://meet.google.com/light-meetings/launch?coords=" + good,
       std::nullopt},
      {"a payload in the fragment", launchPage + "#?coords=" + good, std::nullopt},
  });
}

TEST(TeamsLaunch, IsUnwrappedOnlyWhereAllowed) {
  const std::string address = launchPage + "?coords=" + coords(payload(meeting));
  EXPECT_EQ(test::keyOf(conference(address, /*allowLaunch=*/false)), std::nullopt);
  EXPECT_EQ(test::keyOf(conference(address, /*allowLaunch=*/true)), "teams:123456789");
  EXPECT_EQ(test::keyOf(conference(meeting, /*allowLaunch=*/false)), "teams:123456789");
}

TEST(TeamsLaunch, TakesBothAlphabetsWithAndWithoutPadding) {
  // Wherever the groups of three begin, these six characters give both special digits.
  const std::string json = R"({"x":"???>>>","meetingUrl":")" + meeting + "\"}";
  const std::string one =
      payload(meeting) + std::string((5 - payload(meeting).size() % 3) % 3, ' ');
  const std::string two =
      payload(meeting) + std::string((4 - payload(meeting).size() % 3) % 3, ' ');
  const std::string standard = encoded(json);
  ASSERT_NE(standard.find('+'), std::string::npos);
  ASSERT_NE(standard.find('/'), std::string::npos);
  ASSERT_TRUE(encoded(one).ends_with("=") && !encoded(one).ends_with("=="));
  ASSERT_TRUE(encoded(two).ends_with("=="));
  const std::string page = launchPage + "?coords=";
  expectLaunches({
      {"the URL-safe alphabet", page + coords(json), "teams:123456789"},
      {"the standard alphabet, its pluses turned into spaces", page + standard, "teams:123456789"},
      {"pluses that are escaped", page + replaced(standard, '+', "%2B"), "teams:123456789"},
      {"spaces that are escaped", page + replaced(standard, '+', "%20"), "teams:123456789"},
      {"slashes that are escaped", page + replaced(standard, '/', "%2F"), "teams:123456789"},
      {"one pad", page + encoded(one), "teams:123456789"},
      {"one pad stripped", page + unpadded(encoded(one)), "teams:123456789"},
      {"two pads", page + encoded(two), "teams:123456789"},
      {"two pads stripped", page + unpadded(encoded(two)), "teams:123456789"},
      {"one of two pads stripped", page + unpadded(encoded(two)) + "=", "teams:123456789"},
      {"pads that are escaped", page + replaced(encoded(two), '=', "%3D"), "teams:123456789"},
      {"a surplus pad behind one", page + encoded(one) + "=", std::nullopt},
      {"a surplus pad behind two", page + encoded(two) + "=", std::nullopt},
      {"a character that no group holds", page + unpadded(encoded(one)) + "AA", std::nullopt},
  });
}

TEST(TeamsLaunch, RefusesSurplusPadsBehindAFullGroup) {
  std::string full = payload(meeting);
  while (full.size() % 3 != 0) full += ' ';
  const std::string page = launchPage + "?coords=" + encoded(full);
  expectLaunches({
      {"no pad", page, "teams:123456789"},
      {"one", page + "=", std::nullopt},
      {"two", page + "==", std::nullopt},
      {"four", page + "====", std::nullopt},
  });
}

TEST(TeamsLaunch, IgnoresPadBits) {
  std::string two = payload(meeting);
  while (two.size() % 3 != 1) two += ' ';
  std::string text = encoded(two);
  ASSERT_TRUE(text.ends_with("A==") || text.ends_with("Q==") || text.ends_with("g=="));
  ++text[text.size() - 3];  // sets the lowest of the four pad bits
  EXPECT_EQ(meetingKey(launchPage + "?coords=" + text), "teams:123456789");
}

TEST(TeamsLaunch, TakesPayloadsOfAtMost8192Bytes) {
  const auto padded = [](std::size_t bytes) {
    std::string json = payload(meeting);
    return unpadded(encoded(json + std::string(bytes - json.size(), ' ')));
  };
  ASSERT_EQ(padded(6144).size(), 8192U);
  ASSERT_EQ(padded(6145).size(), 8194U);
  const std::string page = launchPage + "?coords=";
  expectLaunches({
      {"8192 bytes", page + padded(6144), "teams:123456789"},
      {"8193 bytes", page + padded(6144) + "A", std::nullopt},
      {"8194 bytes, well-formed", page + padded(6145), std::nullopt},
      {"8192 bytes that the query writes longer", page + "%65" + padded(6144).substr(1),
       "teams:123456789"},
  });
  ASSERT_EQ(padded(6144)[0], 'e');
}

TEST(TeamsLaunch, GivesTheAddressWithoutJudgingIt) {
  EXPECT_EQ(teamsLaunchAddress("coords=" + coords(payload("anything"))), "anything");
  EXPECT_EQ(teamsLaunchAddress("coords=invalid"), std::nullopt);
  EXPECT_EQ(teamsLaunchAddress(""), std::nullopt);
}

}  // namespace
}  // namespace callmonitor
