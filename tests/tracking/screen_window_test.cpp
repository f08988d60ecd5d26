// When the record of an observation names the window on the screen.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "platform/scripted/desktop.h"
#include "tracking/records.h"

namespace callmonitor {
namespace {

using platform::OnScreenWindow;
using scripted::desktop;

const OnScreenWindow callWindow{42, "Standup", 0, 1234};

// A joined call of process 42, launched at 1.0, whose window is on the screen.
struct World {
  Observation observation;
  World() {
    scripted::reset();
    desktop().applications = {{42, 1.0, "us.zoom.xos", true}};
    desktop().windows = {{7, "Something else", 0, 1}, callWindow};
    Call& call = observation.call;
    call.pid = 42;
    call.launchedAt = 1.0;
    call.title = "Standup";
    observation.state = CallState::joined;
  }
};

struct Row {
  const char* sentence;
  std::function<void(World&)> change;
  std::optional<std::int64_t> number;
};

void setWindows(const std::vector<OnScreenWindow>& windows) {
  desktop().windows = windows;
}

TEST(ScreenWindow, IsNamedForAJoinedCallWithExactlyOneNormalWindowOfItsTitle) {
  const std::optional<std::int64_t> none;
  const std::vector<Row> rows{
      {"a joined call with one window of its title is named", [](World&) {}, 1234},
      {"a call of unknown state has no window",
       [](World& w) { w.observation.state = CallState::unknown; }, none},
      {"a call that left has no window", [](World& w) { w.observation.state = CallState::left; },
       none},
      {"a call without a title has no window, not even one without a name",
       [](World& w) {
         w.observation.call.title = "";
         setWindows({{42, "", 0, 1234}});
       },
       none},
      {"a process that is gone has no window", [](World&) { desktop().applications.clear(); },
       none},
      {"another process is not the call's", [](World&) { desktop().applications[0].pid = 43; },
       none},
      {"a relaunched process is not the call's",
       [](World&) { desktop().applications[0].launchedAt = 2.0; }, none},
      {"a launch that differs by the least amount is another launch",
       [](World&) { desktop().applications[0].launchedAt = std::nextafter(1.0, 2.0); }, none},
      {"a process without a launch time has no window",
       [](World&) { desktop().applications[0].launchedAt.reset(); }, none},
      {"an unknown launch on both sides has no window",
       [](World& w) {
         desktop().applications[0].launchedAt.reset();
         w.observation.call.launchedAt = 0;
       },
       none},
      {"a window list that cannot be had names none", [](World&) { desktop().windows.reset(); },
       none},
      {"an empty window list names none", [](World&) { setWindows({}); }, none},
      {"a window of another process is not the call's",
       [](World&) {
         setWindows({{43, "Standup", 0, 1}});
       },
       none},
      {"a window without an owner is passed over",
       [](World&) {
         setWindows({{std::nullopt, "Standup", 0, 1}, callWindow});
       },
       1234},
      {"a window without a name is passed over",
       [](World&) {
         setWindows({{42, std::nullopt, 0, 1}, callWindow});
       },
       1234},
      {"a window without a layer is passed over",
       [](World&) {
         setWindows({{42, "Standup", std::nullopt, 1}, callWindow});
       },
       1234},
      {"a title in another case is another title",
       [](World&) {
         setWindows({{42, "standup", 0, 1}});
       },
       none},
      {"a longer name is another title",
       [](World&) {
         setWindows({{42, "Standup - Meet", 0, 1}});
       },
       none},
      {"a window above the normal layer is passed over",
       [](World&) {
         setWindows({{42, "Standup", 3, 1}, callWindow});
       },
       1234},
      {"a window below the normal layer is no normal window",
       [](World&) {
         setWindows({{42, "Standup", -1, 1}});
       },
       none},
      {"two windows of the title are ambiguous",
       [](World&) {
         setWindows({callWindow, {42, "Standup", 0, 99}});
       },
       none},
      {"a second match without a number makes the title ambiguous too",
       [](World&) {
         setWindows({callWindow, {42, "Standup", 0, std::nullopt}});
       },
       none},
      {"a window without a number names none",
       [](World&) {
         setWindows({{42, "Standup", 0, std::nullopt}});
       },
       none},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    World world;
    row.change(world);
    const Record record = serializedObservation(world.observation, std::nullopt);
    ASSERT_EQ(record.contains("screenWindowId"), row.number.has_value());
    if (row.number) {
      EXPECT_EQ(record.at("screenWindowId"), JsonValue(*row.number));
    }
  }
}

TEST(ScreenWindow, TheWindowListIsAskedForOnceAndOnlyForAJoinedCallWithATitle) {
  struct Ask {
    CallState state;
    const char* title;
    std::ptrdiff_t times;
  };
  for (const Ask& ask : std::vector<Ask>{{CallState::joined, "Standup", 1},
                                         {CallState::joined, "", 0},
                                         {CallState::unknown, "Standup", 0},
                                         {CallState::left, "Standup", 0}}) {
    World world;
    world.observation.state = ask.state;
    world.observation.call.title = ask.title;
    (void)serializedObservation(world.observation, std::nullopt);
    EXPECT_EQ(std::ranges::count(desktop().calls, "windows"), ask.times);
  }
}

}  // namespace
}  // namespace callmonitor
