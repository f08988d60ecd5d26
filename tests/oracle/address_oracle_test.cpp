// The address rules against a second implementation of them, over addresses by the hundred
// thousand. A disagreement prints the address that brought it about.
#include <gtest/gtest.h>

#include <array>
#include <map>

#include "identity/meeting_identity.h"
#include "oracle/address_generator.h"
#include "oracle/naive_addresses.h"
#include "oracle/naive_text.h"

namespace callmonitor {
namespace {

using oracle::Draw;
using oracle::Key;
using oracle::printable;

constexpr unsigned seed = 19700101;
constexpr int inputs = 100'000;

// A meeting as a printable text of provider and key; "none" when there is none.
std::string shown(const std::optional<Conference>& meeting) {
  return meeting ? meeting->provider + " " + printable(meeting->key) : "none";
}

std::string shown(const Key& key) {
  return key ? key->substr(0, key->find(':')) + " " + printable(*key) : "none";
}

TEST(AddressRules, AgreeWithAPlainImplementation) {
  constexpr std::array statuses{0, 0, 0, 0, 0, 0, 0, -25200, -25204, -25205, -25212, 1};
  Draw draw(seed);
  std::map<std::string, int> met;
  for (int i = 0; i < inputs && !HasFailure(); ++i) {
    const std::string raw = oracle::anyAddress(draw);
    const auto input = [&] { return " of \"" + printable(raw) + "\""; };

    const Key meeting = oracle::conference(raw, true);
    EXPECT_EQ(shown(conference(raw, true)), shown(meeting)) << input();
    const Key plainMeeting = oracle::conference(raw, false);
    EXPECT_EQ(shown(conference(raw, false)), shown(plainMeeting)) << input();
    const Key client = oracle::clientHost(raw);
    EXPECT_EQ(shown(clientHost(raw)), shown(client)) << input();
    const bool landing = oracle::meetLandingPage(raw);
    EXPECT_EQ(meetLandingPage(raw), landing) << input();

    const int status = draw.from(statuses);
    const std::optional<std::string> read = draw.oneIn(50) ? std::nullopt : std::optional(raw);
    const oracle::AreaIdentity expected = oracle::webAreaIdentity(status, read);
    const WebAreaIdentity area = webAreaIdentity(status, read);
    EXPECT_EQ(shown(area.conference), shown(expected.key)) << status << input();
    EXPECT_EQ(area.complete, expected.complete) << status << input();

    ++met[meeting ? meeting->substr(0, meeting->find(':')) : "no meeting"];
    met["launched"] += meeting && !plainMeeting ? 1 : 0;
    met["a host alone"] += client && !meeting ? 1 : 0;
    met["no client"] += client ? 0 : 1;
    met["landing"] += landing ? 1 : 0;
    met["conclusive without a meeting"] += expected.complete && !expected.key ? 1 : 0;
    met["inconclusive"] += expected.complete ? 0 : 1;
  }
  if (HasFailure()) return;
  // Every answer comes up often: addresses that are all refused agree cheaply.
  for (const char* answer : {"no meeting", "a host alone", "no client", "inconclusive"}) {
    EXPECT_GE(met[answer], inputs / 10) << answer;
  }
  EXPECT_GE(met["conclusive without a meeting"], inputs / 20);
  for (const char* provider : {"meet", "zoom", "teams"}) {
    EXPECT_GE(met[provider], inputs / 30) << provider;
  }
  for (const char* rare : {"launched", "landing"}) EXPECT_GE(met[rare], inputs / 150) << rare;
}

}  // namespace
}  // namespace callmonitor
