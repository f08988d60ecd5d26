// What holds of the tracker in any world: some thousand random desktops, each told tick by tick.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <set>

#include "platform/scripted/desktop.h"
#include "support/tracker_samples.h"
#include "tracking/tracker.h"

namespace callmonitor {
namespace {

constexpr int worlds = 2000;
constexpr int ticksInWorld = 25;

struct Tick {
  bool trusted = true;
  std::vector<AppSample> samples;
};

// Draws ticks of one small world: few processes, windows, views and meetings, so that they collide.
class World {
 public:
  explicit World(unsigned seed) : random_(seed) {}

  Tick nextTick() {
    Tick tick;
    tick.trusted = !oneIn(8);
    for (std::int32_t pid = 1; pid <= 3; ++pid) {
      if (oneIn(25)) launches_[pid] += 1;  // another launch under the same identifier
      if (!oneIn(10)) tick.samples.push_back(sample(pid));
    }
    if (oneIn(2)) std::ranges::shuffle(tick.samples, random_);
    return tick;
  }

 private:
  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool oneIn(int chance) { return below(chance) == 0; }

  AppSample sample(std::int32_t pid) {
    AppSample sample;
    sample.pid = pid;
    sample.launchedAt = 1.0 + launches_[pid];
    sample.browser = pid != 1;
    sample.standalone = pid == 3;
    if (!oneIn(3)) sample.audio = ClientAudio{oneIn(2), oneIn(2)};
    if (oneIn(8)) return sample;  // not read
    sample.viewInventoryComplete = !oneIn(4);
    sample.windows.emplace();
    for (const char* name : {"w1", "w2"}) {
      if (!oneIn(3)) sample.windows->insert(name);
      if (oneIn(3)) sample.closedWindows.insert(name);
    }
    for (const char* name : {"v1", "v2", "v3"}) {
      if (oneIn(3)) sample.closedViews.insert(name);
    }
    for (int surfaces = below(4); surfaces > 0; --surfaces) sample.surfaces.push_back(surface(pid));
    return sample;
  }

  Surface surface(std::int32_t pid) {
    constexpr std::array<CallState, 4> states{CallState::joined, CallState::joined, CallState::left,
                                              CallState::unknown};
    Surface surface;
    surface.window = oneIn(2) ? "w1" : "w2";
    surface.element = "v" + std::to_string(1 + below(3));
    surface.conference = pid == 1 && oneIn(2) ? Conference{"meet", ""}
                                              : Conference{"meet", oneIn(2) ? "meet:a" : "meet:b"};
    surface.state = states.at(static_cast<std::size_t>(below(states.size())));
    return surface;
  }

  std::mt19937 random_;
  std::map<std::int32_t, int> launches_;
};

// What was told of the sessions so far.
struct Story {
  std::map<std::string, std::int64_t> lastSequence;  // by session
  std::map<std::string, std::string> open;           // session by call key
  std::set<std::string> ended;

  void follow(const std::vector<Observation>& observations) {
    for (const auto& [call, state] : observations) {
      SCOPED_TRACE(call.id);
      EXPECT_FALSE(ended.contains(call.id)) << "a session that left says nothing more";
      const auto last = lastSequence.find(call.id);
      EXPECT_EQ(call.sequence, last == lastSequence.end() ? 1 : last->second + 1);
      if (last == lastSequence.end()) {
        EXPECT_EQ(state, CallState::joined) << "a session begins joined";
        EXPECT_FALSE(open.contains(call.conference.key)) << "one session a key";
        open[call.conference.key] = call.id;
      }
      EXPECT_EQ(open[call.conference.key], call.id);
      lastSequence[call.id] = call.sequence;
      if (state == CallState::left) {
        open.erase(call.conference.key);
        ended.insert(call.id);
      }
    }
  }
};

std::map<std::string, std::string> sessionsOf(const Tracker& tracker) {
  std::map<std::string, std::string> sessions;
  for (const auto& [key, call] : tracker.calls) {
    EXPECT_EQ(key, call.conference.key);
    sessions[key] = call.id;
  }
  return sessions;
}

bool running(const Call& call, const Tick& tick) {
  return std::ranges::any_of(tick.samples, [&](const AppSample& sample) {
    return sample.pid == call.pid && sample.launchedAt == call.launchedAt;
  });
}

// What one tick says of the calls that were open at its start.
void checkOpenCalls(const std::map<std::string, Call>& before, const Tick& tick,
                    const std::vector<Observation>& observations) {
  std::map<std::string, std::vector<CallState>> said;
  for (const Observation& observation : observations) {
    said[observation.call.id].push_back(observation.state);
  }
  for (const auto& [key, call] : before) {
    SCOPED_TRACE(key);
    ASSERT_EQ(said[call.id].size(), 1U) << "an open call is told once a tick";
    if (!tick.trusted) {
      EXPECT_EQ(said[call.id].front(), CallState::unknown);
    } else if (!running(call, tick)) {
      EXPECT_EQ(said[call.id].front(), CallState::left);
    }
  }
}

// A tick without trust counts on and forgets absences; nothing else changes.
void checkUntouched(const std::map<std::string, Call>& before,
                    const std::map<std::string, Call>& after) {
  ASSERT_EQ(before.size(), after.size());
  for (const auto& [key, was] : before) {
    const Call& is = after.at(key);
    EXPECT_EQ(is.sequence, was.sequence + 1);
    EXPECT_EQ(is.missing, 0);
    EXPECT_EQ(is.id, was.id);
    EXPECT_EQ(is.pid, was.pid);
    EXPECT_EQ(is.launchedAt, was.launchedAt);
    EXPECT_EQ(is.browser, was.browser);
    EXPECT_EQ(is.conference, was.conference);
    EXPECT_EQ(is.window, was.window);
    EXPECT_EQ(is.element, was.element);
    EXPECT_EQ(is.heardClientAudio, was.heardClientAudio);
    EXPECT_EQ(is.applicationBundleID, was.applicationBundleID);
    EXPECT_EQ(is.title, was.title);
    EXPECT_EQ(is.mediaActive, was.mediaActive);
  }
}

TEST(TrackerInAnyWorld, SessionsAreToldWithoutGapsAndEndOnce) {
  scripted::reset();
  std::set<CallState> statesSeen;
  for (unsigned seed = 1; seed <= worlds; ++seed) {
    SCOPED_TRACE("world " + std::to_string(seed));
    World world(seed);
    Tracker tracker;
    Story story;
    for (int number = 0; number < ticksInWorld; ++number) {
      SCOPED_TRACE("tick " + std::to_string(number));
      const Tick tick = world.nextTick();
      const std::map<std::string, Call> before = tracker.calls;
      const std::vector<Observation> observations = tracker.apply(tick.samples, tick.trusted);
      checkOpenCalls(before, tick, observations);
      if (!tick.trusted) {
        EXPECT_EQ(observations.size(), before.size()) << "no call opens without trust";
        checkUntouched(before, tracker.calls);
      }
      story.follow(observations);
      EXPECT_EQ(sessionsOf(tracker), story.open);
      for (const auto& [key, call] : tracker.calls) {
        EXPECT_TRUE(call.missing == 0 || call.missing == 1);
      }
      for (const Observation& observation : observations) statesSeen.insert(observation.state);
      if (HasFailure()) return;
    }
  }
  EXPECT_EQ(statesSeen.size(), 3U) << "the worlds show every state";
}

}  // namespace
}  // namespace callmonitor
