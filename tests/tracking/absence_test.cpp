// Which absences of a call's surface count towards its end.
#include <gtest/gtest.h>

#include <functional>

#include "support/tracker_samples.h"
#include "tracking/surface_matching.h"

namespace callmonitor {
namespace {

using namespace support;

Call missingCall(bool browser) {
  Call call;
  call.pid = 7;
  call.launchedAt = 1.0;
  call.browser = browser;
  call.conference = browser ? meetMeeting : Conference{"zoom", "zoom:native-1"};
  call.window = "window";
  call.element = "element";
  call.heardClientAudio = true;
  return call;
}

// Each row changes one thing about an absence that counts.
struct Row {
  const char* sentence;
  std::function<void(Call&, AppSample&)> change;
  bool counts;
};

void check(const std::vector<Row>& rows, const Call& call, const AppSample& sample) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    Call changedCall = call;
    AppSample changedSample = sample;
    row.change(changedCall, changedSample);
    EXPECT_EQ(absenceCounts(changedCall, changedSample), row.counts);
  }
}

TEST(AbsenceCounts, ANativeCallIsAbsentOnceItsWindowIsClosedAndNothingSpeaksForIt) {
  AppSample sample = nativeSample();
  sample.closedWindows = {"window"};
  sample.audio = silence;
  check(
      {
          {"a closed window and a silent client count", [](Call&, AppSample&) {}, true},
          {"a closed window without knowledge of audio counts",
           [](Call&, AppSample& s) { s.audio.reset(); }, true},
          {"input keeps the call",
           [](Call&, AppSample& s) {
             s.audio = ClientAudio{true, false};
           },
           false},
          {"output keeps the call",
           [](Call&, AppSample& s) {
             s.audio = ClientAudio{false, true};
           },
           false},
          {"a window that is not known to be closed keeps the call",
           [](Call&, AppSample& s) { s.closedWindows = {"other window"}; }, false},
          {"a closed view alone proves nothing",
           [](Call&, AppSample& s) {
             s.closedWindows.clear();
             s.closedViews = {"element"};
           },
           false},
          {"any joined surface of the client keeps the call",
           [](Call&, AppSample& s) {
             s.surfaces = {zoomSurface(CallState::joined, "other window")};
           },
           false},
          {"a joined surface of another provider keeps the call too",
           [](Call&, AppSample& s) {
             s.surfaces = {{"w", "w", {"webex", ""}, CallState::joined, "", false}};
           },
           false},
          {"a surface that is not joined does not keep the call",
           [](Call&, AppSample& s) {
             s.surfaces = {zoomSurface(CallState::unknown, "home"),
                           zoomSurface(CallState::left, "notice")};
           },
           true},
          {"audio need not have been heard",
           [](Call& c, AppSample&) { c.heardClientAudio = false; }, true},
          {"the inventory of views need not be complete",
           [](Call&, AppSample& s) { s.viewInventoryComplete = false; }, true},
      },
      missingCall(/*browser=*/false), sample);
}

TEST(AbsenceCounts, ABrowserTabIsAbsentOnceHeardThenSilentAndItsPageIsClosed) {
  AppSample sample = browserSample();
  sample.windows = {"another window"};
  sample.closedViews = {"element"};
  sample.audio = silence;
  check(
      {
          {"all together count", [](Call&, AppSample&) {}, true},
          {"unknown audio is not silence", [](Call&, AppSample& s) { s.audio.reset(); }, false},
          {"input keeps the call",
           [](Call&, AppSample& s) {
             s.audio = ClientAudio{true, false};
           },
           false},
          {"output keeps the call",
           [](Call&, AppSample& s) {
             s.audio = ClientAudio{false, true};
           },
           false},
          {"a call that was never heard is not ended by silence",
           [](Call& c, AppSample&) { c.heardClientAudio = false; }, false},
          {"an incomplete inventory keeps the call",
           [](Call&, AppSample& s) { s.viewInventoryComplete = false; }, false},
          {"a page that is not known to be closed keeps the call",
           [](Call&, AppSample& s) { s.closedViews = {"another page"}; }, false},
          {"a closed window does not stand in for a closed page",
           [](Call&, AppSample& s) {
             s.closedViews.clear();
             s.closedWindows = {"window"};
           },
           false},
          {"a surface that still carries the meeting keeps the call, joined or not",
           [](Call&, AppSample& s) {
             s.surfaces = {meetSurface(CallState::unknown, "new", "another window")};
           },
           false},
          {"a surface that left the same meeting keeps the call",
           [](Call&, AppSample& s) {
             s.surfaces = {meetSurface(CallState::left, "new", "another window")};
           },
           false},
          {"a surface of another meeting does not keep the call",
           [](Call&, AppSample& s) {
             s.surfaces = {{"w", "e", {"meet", "meet:xxx-yyyy-zzz"}, CallState::joined, "", false}};
           },
           true},
      },
      missingCall(/*browser=*/true), sample);
}

// A web app, and a browser that has no window left: the closed window may count by itself.
void checkWindowGone(const AppSample& sample) {
  check(
      {
          {"a closed window and a silent client count", [](Call&, AppSample&) {}, true},
          {"a closed window without knowledge of audio counts",
           [](Call&, AppSample& s) { s.audio.reset(); }, true},
          {"input keeps the call",
           [](Call&, AppSample& s) {
             s.audio = ClientAudio{true, false};
           },
           false},
          {"output keeps the call",
           [](Call&, AppSample& s) {
             s.audio = ClientAudio{false, true};
           },
           false},
          {"a closed window counts for a call that was never heard",
           [](Call& c, AppSample&) { c.heardClientAudio = false; }, true},
          {"a closed window counts with an incomplete inventory",
           [](Call&, AppSample& s) { s.viewInventoryComplete = false; }, true},
          {"without a closed window, the closed page of a heard and silent client counts",
           [](Call&, AppSample& s) {
             s.closedWindows.clear();
             s.closedViews = {"element"};
           },
           true},
          {"neither window nor page closed does not count",
           [](Call&, AppSample& s) { s.closedWindows.clear(); }, false},
          {"a closed page with unknown audio does not count",
           [](Call&, AppSample& s) {
             s.closedWindows.clear();
             s.closedViews = {"element"};
             s.audio.reset();
           },
           false},
          {"a closed page of a client that was never heard does not count",
           [](Call& c, AppSample& s) {
             s.closedWindows.clear();
             s.closedViews = {"element"};
             c.heardClientAudio = false;
           },
           false},
          {"a closed page with an incomplete inventory does not count",
           [](Call&, AppSample& s) {
             s.closedWindows.clear();
             s.closedViews = {"element"};
             s.viewInventoryComplete = false;
           },
           false},
          {"a closed page whose meeting stands elsewhere does not count",
           [](Call&, AppSample& s) {
             s.closedWindows.clear();
             s.closedViews = {"element"};
             s.surfaces = {meetSurface(CallState::unknown, "new", "another window")};
           },
           false},
      },
      missingCall(/*browser=*/true), sample);
}

TEST(AbsenceCounts, AWebAppIsAbsentOnceItsWindowIsClosed) {
  AppSample sample = browserSample();
  sample.standalone = true;
  sample.windows = {"another window"};
  sample.closedWindows = {"window"};
  sample.audio = silence;
  checkWindowGone(sample);
}

TEST(AbsenceCounts, ABrowserWithoutAnyWindowIsAbsentOnceItsWindowIsClosed) {
  AppSample sample = browserSample();
  sample.windows.emplace();
  sample.closedWindows = {"window"};
  sample.audio = silence;
  checkWindowGone(sample);
}

}  // namespace
}  // namespace callmonitor
