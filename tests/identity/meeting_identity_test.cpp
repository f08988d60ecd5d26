// Which meeting an address names: paths, identifiers, limits.
#include "identity/meeting_identity.h"

#include <gtest/gtest.h>

#include "support/meeting_key.h"

namespace callmonitor {
namespace {

using test::meetingKey;

struct MeetingCase {
  std::string_view sentence;
  std::string raw;
  std::optional<std::string> key;
};

void expectMeetings(const std::vector<MeetingCase>& cases) {
  for (const MeetingCase& row : cases) {
    SCOPED_TRACE(std::string(row.sentence) + ": " + row.raw.substr(0, 120));
    EXPECT_EQ(meetingKey(row.raw), row.key);
  }
}

std::string repeated(std::string_view piece, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

TEST(MeetingIdentity, OfMeetIsTheCodeInLowerCase) {
  const std::string host = "https://meet.google.com";
  expectMeetings({
      {"the code", host + "/abc-defg-hij", "meet:abc-defg-hij"},
      {"capitals become small", host + "/ABC-DEFG-HIJ?authuser=0", "meet:abc-defg-hij"},
      {"the code below /meet", host + "/meet/abc-defg-hij", "meet:abc-defg-hij"},
      {"capitals below /meet", host + "/meet/Abc-deFg-hiJ", "meet:abc-defg-hij"},
      {"a slash behind", host + "/abc-defg-hij/", "meet:abc-defg-hij"},
      {"a further path behind", host + "/abc-defg-hij/x/y", "meet:abc-defg-hij"},
      {"a fragment does not matter", host + "/abc-defg-hij#x", "meet:abc-defg-hij"},
      {"an escaped letter", host + "/%61bc-defg-hij", "meet:abc-defg-hij"},
      {"an escaped slash", host + "/meet%2Fabc-defg-hij", "meet:abc-defg-hij"},
      {"one line terminator behind", host + "/abc-defg-hij%0A", "meet:abc-defg-hij"},
      {"/meet twice", host + "/meet/meet/abc-defg-hij", std::nullopt},
      {"/meet in capitals", host + "/Meet/abc-defg-hij", std::nullopt},
      {"another path before", host + "/other/abc-defg-hij", std::nullopt},
      {"a doubled slash", host + "//abc-defg-hij", std::nullopt},
      {"a landing page", host + "/landing", std::nullopt},
      {"a landing page below /meet", host + "/meet/landing", std::nullopt},
      {"the root", host + "/", std::nullopt},
      {"no path", host, std::nullopt},
      {"the page of a new meeting", host + "/new", std::nullopt},
      {"a letter too many", host + "/abc-defg-hijk", std::nullopt},
      {"a letter too few", host + "/abc-defg-hi", std::nullopt},
      {"a digit", host + "/abc-def1-hij", std::nullopt},
      {"a letter beyond ASCII", host + "/abc-d%C3%A9fg-hij", std::nullopt},
      {"other hyphens", host + "/abc_defg_hij", std::nullopt},
      {"no hyphens", host + "/abcdefghij", std::nullopt},
      {"a space behind", host + "/abc-defg-hij%20", std::nullopt},
      {"two line terminators behind", host + "/abc-defg-hij%0A%0A", std::nullopt},
      {"the zero character behind", host + "/abc-defg-hij%00", std::nullopt},
      {"a code in the query", host + "/?x=/abc-defg-hij", std::nullopt},
      {"a code in the fragment", host + "/#/abc-defg-hij", std::nullopt},
      {"a query question mark that is escaped", host + "/abc-defg-hij%3Fx", std::nullopt},
      {"the path of another provider", host + "/j/123456789", std::nullopt},
  });
}

TEST(MeetingIdentity, OfZoomIsTheNumber) {
  const std::string host = "https://zoom.us";
  expectMeetings({
      {"the web client on a numbered sub-domain",
       "https://us02web.zoom.us/wc/join/123456789?pwd=secret", "zoom:123456789"},
      {"below /j", host + "/j/123456789", "zoom:123456789"},
      {"below /wc", host + "/wc/123456789", "zoom:123456789"},
      {"below /wc with a page behind", host + "/wc/123456789/start", "zoom:123456789"},
      {"the alternative domain", "https://zoom.com/j/123456789", "zoom:123456789"},
      {"a sub-domain of it", "https://app.zoom.com/wc/123456789/join", "zoom:123456789"},
      {"6 digits", host + "/j/123456", "zoom:123456"},
      {"15 digits", host + "/j/123456789012345", "zoom:123456789012345"},
      {"leading zeros stay", host + "/j/000123", "zoom:000123"},
      {"a slash behind", host + "/j/123456789/", "zoom:123456789"},
      {"an escaped slash", host + "/j%2F123456789", "zoom:123456789"},
      {"a line feed behind", host + "/j/123456789%0A", "zoom:123456789"},
      {"a return and a line feed behind", host + "/j/123456789%0D%0A", "zoom:123456789"},
      {"a next line character behind", host + "/j/123456789%C2%85", "zoom:123456789"},
      {"a line separator behind", host + "/j/123456789%E2%80%A8", "zoom:123456789"},
      {"5 digits", host + "/j/12345", std::nullopt},
      {"16 digits", host + "/j/1234567890123456", std::nullopt},
      {"a letter behind the digits", host + "/j/123456789x", std::nullopt},
      {"digits of another script", host + "/j/%D9%A1%D9%A2%D9%A3%D9%A4%D9%A5%D9%A6%D9%A7",
       std::nullopt},
      {"/j in capitals", host + "/J/123456789", std::nullopt},
      {"/join without /wc", host + "/join/123456789", std::nullopt},
      {"/wc/join/j", host + "/wc/join/j/123456789", std::nullopt},
      {"dots in a path are not resolved", host + "/x/../j/123456789", std::nullopt},
      {"/j within a path", host + "/x/j/123456789", std::nullopt},
      {"the start page", host + "/s/123456789", std::nullopt},
      {"the zero character behind", host + "/j/123456789%00", std::nullopt},
      {"the zero character and a slash behind", host + "/j/123456789%00/", std::nullopt},
      {"two line feeds behind", host + "/j/123456789%0A%0A", std::nullopt},
      {"no number", host + "/wc/home", std::nullopt},
      {"the domain with a further domain", "https://zoom.us.example.org/j/123456789", std::nullopt},
      {"a foreign prefix", "https://evilzoom.us/j/123456789", std::nullopt},
      {"a foreign host", "https://example.org/j/123456789", std::nullopt},
  });
}

TEST(MeetingIdentity, OfTeamsIsTheThreadOrTheMeetingAsWritten) {
  const std::string work = "https://teams.microsoft.com";
  const std::string live = "https://teams.live.com";
  const std::string cloud = "https://teams.cloud.microsoft";
  expectMeetings({
      {"a thread with escapes", work + "/l/meetup-join/19%3ameeting_test%40thread.v2/0",
       "teams:19:meeting_test@thread.v2"},
      {"a thread without escapes", work + "/l/meetup-join/19:meeting_test@thread.v2/0?context=x",
       "teams:19:meeting_test@thread.v2"},
      {"a thread with nothing behind", work + "/l/meetup-join/19:x", "teams:19:x"},
      {"case is kept", cloud + "/v2/meet/meeting_ID", "teams:meeting_ID"},
      {"case of a thread is kept", work + "/l/meetup-join/19%3AMeeting_AbC",
       "teams:19:Meeting_AbC"},
      {"/meet on the consumer host", live + "/meet/123456789", "teams:123456789"},
      {"/meet on the work host", work + "/meet/2123456789012?p=AbC", "teams:2123456789012"},
      {"letters, digits, underscore and hyphen", work + "/meet/aZ09_-", "teams:aZ09_-"},
      {"/v2/meet on the consumer host", live + "/v2/meet/abc", "teams:abc"},
      {"a path behind", work + "/meet/abc/def", "teams:abc"},
      {"a plus in a path is a plus", work + "/l/meetup-join/a+b/0", "teams:a+b"},
      {"an escaped space in a thread", work + "/l/meetup-join/a%20b/0", "teams:a b"},
      {"the zero character does not end a thread", work + "/l/meetup-join/a%00b/0",
       std::string("teams:a\0b", 9)},
      {"text beyond ASCII in a thread", work + "/l/meetup-join/%C3%89%F0%9F%98%80/0", "teams:É😀"},
      {"a thread that looks like /meet", work + "/l/meetup-join/meet/abc", "teams:meet"},
      {"an empty thread", work + "/l/meetup-join//0", std::nullopt},
      {"no thread", work + "/l/meetup-join/", std::nullopt},
      {"an empty meeting", work + "/meet/", std::nullopt},
      {"a character that no meeting has", work + "/meet/a.b", std::nullopt},
      {"/v2 before a thread", work + "/v2/l/meetup-join/19:x", std::nullopt},
      {"capitals in the path", work + "/L/meetup-join/19:x", std::nullopt},
      {"a path before", work + "/x/meet/abc", std::nullopt},
      {"a launcher page", work + "/dl/launcher/launcher.html?url=%2Fmeet%2Fabc", std::nullopt},
      {"http", "http://teams.live.com/meet/123456789", std::nullopt},
      {"a user", "https://user@teams.live.com/meet/123456789", std::nullopt},
      {"a further domain", "https://teams.live.com.example.org/meet/123456789", std::nullopt},
      {"a sub-domain", "https://eu.teams.live.com/meet/123456789", std::nullopt},
      {"a foreign host", "https://example.org/meet/123456789", std::nullopt},
      {"a host of Meet", "https://meet.google.com/meet/123456789", std::nullopt},
  });
}

TEST(MeetingIdentity, OfTheTeamsConsumerClientStandsInTheFragment) {
  const std::string live = "https://teams.live.com";
  expectMeetings({
      {"below /v2/ with a query behind", live + "/v2/#/meet/123456789?p=AbC", "teams:123456789"},
      {"below /v2", live + "/v2#/meet/123456789", "teams:123456789"},
      {"a query before the fragment", live + "/v2/?x=1#/meet/123456789", "teams:123456789"},
      {"escapes in the fragment", live + "/v2/#%2Fmeet%2FabC", "teams:abC"},
      {"an escaped question mark cuts too", live + "/v2/#/meet/abc%3Fp=x", "teams:abc"},
      {"an escaped path to the route", live + "/%762/#/meet/abc", "teams:abc"},
      {"a path behind the meeting", live + "/v2/#/meet/abc/def?x", "teams:abc"},
      {"another fragment", live + "/v2/#/calendar", std::nullopt},
      {"a fragment without its first slash", live + "/v2/#meet/abc", std::nullopt},
      {"capitals in the fragment", live + "/v2/#/Meet/abc", std::nullopt},
      {"a thread in the fragment", live + "/v2/#/l/meetup-join/19:x/0", std::nullopt},
      {"an empty meeting in the fragment", live + "/v2/#/meet/?x", std::nullopt},
      {"no fragment", live + "/v2/", std::nullopt},
      {"a fragment that does not decode", live + "/v2/#/meet/abc%FF", std::nullopt},
      {"another path", live + "/v3/#/meet/abc", std::nullopt},
      {"a path behind the route", live + "/v2/x#/meet/abc", std::nullopt},
      {"a doubled slash", live + "/v2//#/meet/abc", std::nullopt},
      {"the work host has no such route", "https://teams.microsoft.com/v2/#/meet/abc",
       std::nullopt},
      {"the cloud host has no such route", "https://teams.cloud.microsoft/v2/#/meet/abc",
       std::nullopt},
      {"a path that is a meeting stands", live + "/v2/meet/abc#/meet/def", "teams:abc"},
  });
}

TEST(MeetingIdentity, NeedsAPathThatDecodes) {
  const std::string thread = "https://teams.microsoft.com/l/meetup-join/";
  expectMeetings({
      {"bytes that are not UTF-8 in the meeting", thread + "a%FFb/0", std::nullopt},
      {"bytes that are not UTF-8 behind the meeting", thread + "abc/%FF", std::nullopt},
      {"a cut-off character", "https://zoom.us/j/123456789/%E2%80", std::nullopt},
      {"a surrogate", "https://meet.google.com/abc-defg-hij/%ED%A0%80", std::nullopt},
      {"an escape without digits", "https://zoom.us/j/123456789/%", std::nullopt},
      {"bytes that are not UTF-8 in the query do not matter", "https://zoom.us/j/123456789?x=%FF",
       "zoom:123456789"},
      {"an escape is decoded once", thread + "a%252Fb/0", "teams:a%2Fb"},
  });
}

TEST(MeetingIdentity, IsAtMost512Utf16Units) {
  const std::string thread = "https://teams.microsoft.com/l/meetup-join/";
  const std::string emoji = "%F0%9F%98%80";  // two units, one character
  expectMeetings({
      {"512 letters", thread + std::string(512, 'a'), "teams:" + std::string(512, 'a')},
      {"513 letters", thread + std::string(513, 'a'), std::nullopt},
      {"512 letters of two bytes", thread + repeated("%C3%A9", 512), "teams:" + repeated("é", 512)},
      {"513 letters of two bytes", thread + repeated("%C3%A9", 513), std::nullopt},
      {"256 emoji are 512 units", thread + repeated(emoji, 256), "teams:" + repeated("😀", 256)},
      {"256 emoji and a letter are 513", thread + repeated(emoji, 256) + "a", std::nullopt},
      {"/meet has the same limit", "https://teams.live.com/meet/" + std::string(513, 'a'),
       std::nullopt},
  });
}

TEST(MeetingIdentity, TakesAddressesOfAtMost16384Bytes) {
  const std::string address = "https://meet.google.com/abc-defg-hij?";
  const std::string longest = address + std::string(16384 - address.size(), 'x');
  expectMeetings({
      {"16384 bytes", longest, "meet:abc-defg-hij"},
      {"16385 bytes", longest + "x", std::nullopt},
  });
  EXPECT_EQ(test::keyOf(clientHost(longest + "x")), "meet:meet.google.com")
      << "a client's host has no limit of its own";
  EXPECT_TRUE(webAreaIdentity(0, longest + "x").complete);
  EXPECT_EQ(test::keyOf(webAreaIdentity(0, longest + "x").conference), std::nullopt);
}

// Addresses as clients show them, identifiers made up.
TEST(MeetingIdentity, OfRealAddresses) {
  const std::string thread =
      "https://teams.microsoft.com/l/meetup-join/19%3ameeting_MadeUp0Id%40thread.v2/0";
  expectMeetings({
      {"Meet", "https://meet.google.com/abc-defg-hij?authuser=0", "meet:abc-defg-hij"},
      {"Meet's landing", "https://meet.google.com/_meet/abc-defg-hij", std::nullopt},
      {"a nickname", "https://meet.google.com/lookup/weekly-sync?authuser=0&hs=179", std::nullopt},
      {"Zoom's launch page", "https://zoom.us/j/91234567890#success", "zoom:91234567890"},
      {"Zoom in a call", "https://app.zoom.us/wc/91234567890/join?fromPWA=1&pwd=AbCdEf",
       "zoom:91234567890"},
      {"Zoom's own start", "https://app.zoom.us/wc/91234567890/start?fromPWA=1",
       "zoom:91234567890"},
      {"Zoom's home", "https://app.zoom.us/wc/home", std::nullopt},
      {"Zoom's survey", "https://zoom.us/postattendee", std::nullopt},
      {"Zoom's webinar page", "https://us02web.zoom.us/w/81234567890", std::nullopt},
      {"a Teams thread",
       thread + "?context=%7b%22Tid%22%3a%2200000000-0000-0000-0000-000000000000%22%7d",
       "teams:19:meeting_MadeUp0Id@thread.v2"},
      {"old Teams",
       "https://teams.microsoft.com/_#/conversations/General?threadId=19:madeup@thread.tacv2",
       std::nullopt},
      {"Teams of a government",
       "https://dod.teams.microsoft.us/l/meetup-join/19%3ameeting_MadeUp0Id%40thread.v2/0",
       std::nullopt},
      {"a Webex room", "https://example.webex.com/meet/madeupuser", std::nullopt},
      {"a consumer launch page",
       "https://teams.live.com/light-meetings/launch?anon=true&lightExperience=true&coords="
       "eyJtZWV0aW5nVXJsIjogImh0dHBzOi8vdGVhbXMubGl2ZS5jb20vbWVldC85MzEyMzQ1Njc4OTAxP3A9QWJDZEVm"
       "R2hJaiJ9",
       "teams:9312345678901"},
  });
}

}  // namespace
}  // namespace callmonitor
