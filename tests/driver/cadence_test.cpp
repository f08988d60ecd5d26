// When the next cycle starts and which application a cycle looks at first.
#include "driver/cadence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace callmonitor {
namespace {

constexpr double never = -std::numeric_limits<double>::infinity();
using Front = std::optional<std::string>;

TEST(Cadence, ItsPeriodsAreFixed) {
  EXPECT_EQ(idleScanInterval, 1.0);
  EXPECT_EQ(suspectedScanInterval, 0.5);
  EXPECT_EQ(suspectedScanWindow, 30.0);
  EXPECT_EQ(minimumScanGap, 0.1);
}

TEST(Cadence, ItStartsWithoutAFrontAndOutsideFastMode) {
  const ScanCadence cadence;
  EXPECT_EQ(cadence.lastPID, std::nullopt);
  EXPECT_EQ(cadence.lastFront, std::nullopt);
  EXPECT_EQ(cadence.fastUntil, never);
}

// One cycle's end, and what comes of it.
struct End {
  const char* sentence;
  std::optional<std::int32_t> pid;
  Front front;
  bool tracked;
  double now;
  double interval;
  double fastUntil;
};

void follow(const std::vector<End>& ends) {
  ScanCadence cadence;
  for (const End& end : ends) {
    SCOPED_TRACE(end.sentence);
    EXPECT_EQ(cadence.interval(end.pid, end.front, end.tracked, end.now), end.interval);
    EXPECT_EQ(cadence.fastUntil, end.fastUntil);
    EXPECT_EQ(cadence.lastPID, end.pid);
  }
}

TEST(Cadence, ANewFingerprintStartsThirtySecondsOfFastMode) {
  follow({
      {"the first fingerprint", 42, "42:a", false, 100, 0.5, 130},
      {"the same a little later", 42, "42:a", false, 101, 0.5, 130},
      {"the last moment", 42, "42:a", false, std::nextafter(130.0, 0.0), 0.5, 130},
      {"thirty seconds are over", 42, "42:a", false, 130, 1.0, 130},
      {"the same much later", 42, "42:a", false, 131, 1.0, 130},
      {"another fingerprint starts again", 42, "42:b", false, 200, 0.5, 230},
      {"going back is a change too", 42, "42:a", false, 210, 0.5, 240},
  });
}

TEST(Cadence, AChangeDuringFastModeStartsItsThirtySecondsAgain) {
  follow({
      {"the first", 42, "42:a", false, 100, 0.5, 130},
      {"the change", 42, "42:b", false, 120, 0.5, 150},
      {"past the first's end", 42, "42:b", false, 140, 0.5, 150},
  });
}

TEST(Cadence, ATrackedCallSuspendsFastModeButNotItsClock) {
  follow({
      {"a fingerprint beside a call", 42, "42:a", true, 100, 1.0, 130},
      {"the call has ended", 42, "42:a", false, 110, 0.5, 130},
  });
}

TEST(Cadence, AnotherProcessInFrontEndsFastMode) {
  follow({
      {"fast", 42, "42:a", false, 100, 0.5, 130},
      {"another without a fingerprint", 43, std::nullopt, false, 101, 1.0, never},
      {"back again, its fingerprint is new", 42, "42:a", false, 102, 0.5, 132},
      {"another with the same text starts its own", 43, "42:a", false, 103, 0.5, 133},
      {"nothing in front", std::nullopt, std::nullopt, false, 104, 1.0, never},
  });
}

TEST(Cadence, AnAbsentFingerprintIsIdleAndChangesNothing) {
  follow({
      {"fast", 42, "42:a", false, 100, 0.5, 130},
      {"nothing shown", 42, std::nullopt, false, 101, 1.0, 130},
      {"shown again unchanged within the thirty seconds", 42, "42:a", false, 129, 0.5, 130},
      {"shown again unchanged after them", 42, "42:a", false, 131, 1.0, 130},
  });
}

TEST(Cadence, NoApplicationInFrontTwiceInARowIsNoChange) {
  ScanCadence cadence;
  EXPECT_EQ(cadence.interval(std::nullopt, "f", false, 100), 0.5);
  EXPECT_EQ(cadence.interval(std::nullopt, "f", false, 101), 0.5);
  EXPECT_EQ(cadence.fastUntil, 130) << "the second call reset nothing";
  EXPECT_EQ(cadence.lastFront, "f");
}

TEST(Cadence, AnEmptyFingerprintIsAFingerprint) {
  follow({{"empty", 42, "", false, 100, 0.5, 130}, {"the same", 42, "", false, 110, 0.5, 130}});
}

TEST(NextScanDelay, IsWhatIsLeftOfThePeriodAndATenthOfASecondAtLeast) {
  struct Row {
    double interval;
    double elapsed;
    double delay;
  };
  for (const Row& row : std::vector<Row>{{1.0, 0.0, 1.0},
                                         {1.0, 0.3, 0.7},
                                         {0.5, 0.1, 0.4},
                                         {1.0, 0.9, 0.1},
                                         {1.0, 0.95, 0.1},
                                         {1.0, 1.0, 0.1},
                                         {1.0, 1.5, 0.1},
                                         {0.5, 100.0, 0.1},
                                         {1.0, -0.5, 1.5}}) {
    SCOPED_TRACE(row.elapsed);
    EXPECT_DOUBLE_EQ(nextScanDelay(row.interval, row.elapsed), row.delay);
    EXPECT_GE(nextScanDelay(row.interval, row.elapsed), 0.1);
  }
}

TEST(ScanPriority, ANativeClientInFrontComesFirstThenCallsThenTheRest) {
  struct Row {
    const char* sentence;
    const char* bundle;
    bool tracked;
    bool frontmost;
    int rank;
  };
  for (const Row& row : std::vector<Row>{
           {"a native client in front", "us.zoom.xos", false, true, 0},
           {"a native client in front with a call", "us.zoom.xos", true, true, 0},
           {"Teams in front", "com.microsoft.teams2", false, true, 0},
           {"old Teams in front", "com.microsoft.teams", false, true, 0},
           {"Webex in front", "com.cisco.webexmeetingsapp", false, true, 0},
           {"a native client behind with a call", "us.zoom.xos", true, false, 1},
           {"a native client behind", "us.zoom.xos", false, false, 2},
           {"a browser in front has no rank of its own", "com.google.Chrome", false, true, 2},
           {"a browser in front with a call", "com.google.Chrome", true, true, 1},
           {"a browser behind with a call", "com.google.Chrome", true, false, 1},
           {"a generic client in front", "org.example.Calls", false, true, 2},
           {"an application without identifier in front", "", false, true, 2},
           {"an identifier in another case", "US.ZOOM.XOS", false, true, 2},
       }) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(scanPriority(row.bundle, row.tracked, row.frontmost), row.rank);
  }
}

AppSample showing(const std::vector<Surface>& surfaces) {
  AppSample sample;
  sample.pid = 42;
  sample.surfaces = surfaces;
  return sample;
}

Surface surface(const Conference& conference, const std::string& title,
                CallState state = CallState::unknown) {
  return {"w", "e", conference, state, title, false};
}

const Conference zoom{"zoom", "zoom:1234567890"};
const Conference meet{"meet", "meet:abc-defg-hij"};
const Conference generic{"application", ""};

TEST(SuspectedFront, IsTheProcessAndItsMeetingSurfacesInOrderOfText) {
  struct Row {
    const char* sentence;
    std::vector<Surface> surfaces;
    Front fingerprint;
  };
  for (const Row& row : std::vector<Row>{
           {"nothing shown", {}, std::nullopt},
           {"one surface", {surface(meet, "Standup")}, "42:meet:abc-defg-hij|Standup"},
           {"two surfaces in order of their text",
            {surface(zoom, "Zoom Meeting"), surface(meet, "Synthetic meeting")},
            "42:meet:abc-defg-hij|Synthetic meeting,zoom:1234567890|Zoom Meeting"},
           {"titles decide between equal keys, by plain text order",
            {surface(meet, "b"), surface(meet, "a"), surface(meet, "B")},
            "42:meet:abc-defg-hij|B,meet:abc-defg-hij|a,meet:abc-defg-hij|b"},
           {"the same text twice stands twice",
            {surface(meet, "a"), surface(meet, "a")},
            "42:meet:abc-defg-hij|a,meet:abc-defg-hij|a"},
           {"an empty key and an empty title", {surface({"zoom", ""}, "")}, "42:|"},
           {"a joined surface counts",
            {surface(meet, "a", CallState::joined)},
            "42:meet:abc-defg-hij|a"},
           {"a surface that was left does not count",
            {surface(meet, "a", CallState::left)},
            std::nullopt},
           {"a generic surface does not count",
            {surface(generic, "Call"), surface(generic, "Call", CallState::joined)},
            std::nullopt},
           {"the rest counts beside those",
            {surface(generic, "Call"), surface(zoom, "b", CallState::left), surface(meet, "a")},
            "42:meet:abc-defg-hij|a"},
       }) {
    SCOPED_TRACE(row.sentence);
    const AppSample sample = showing(row.surfaces);
    EXPECT_EQ(suspectedFront(&sample, /*tracked=*/false), row.fingerprint);
  }
}

TEST(SuspectedFront, IsAbsentWithoutASampleAndWhileACallIsTracked) {
  const AppSample sample = showing({surface(meet, "a")});
  EXPECT_EQ(suspectedFront(nullptr, /*tracked=*/false), std::nullopt);
  EXPECT_EQ(suspectedFront(nullptr, /*tracked=*/true), std::nullopt);
  EXPECT_EQ(suspectedFront(&sample, /*tracked=*/true), std::nullopt);
}

}  // namespace
}  // namespace callmonitor
