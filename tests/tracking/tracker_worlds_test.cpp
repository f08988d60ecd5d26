// What holds of the tracker in any world: random desktops, each told tick by tick.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/scripted/desktop.h"
#include "tracking/tracker.h"

namespace callmonitor {
namespace {

// Builds in which every world costs many times as much define a smaller number.
#ifndef TRACKER_WORLDS
#define TRACKER_WORLDS 100'000
#endif
constexpr unsigned worlds = TRACKER_WORLDS;

struct Tick {
  bool trusted = true;
  std::vector<AppSample> samples;
};

// Draws ticks of one small world: few processes, windows, views and meetings, so that they collide.
// Each world has a temper of its own, from one in which views seldom change, where sessions last,
// to one in which everything does.
class World {
 public:
  explicit World(unsigned seed) : random_(seed), restless_(2 + below(12)) {
    ticks_ = 10 + below(21);
    for (std::size_t p = 0; p < processes; ++p) processes_.at(p) = sample(p);
  }

  [[nodiscard]] std::size_t ticks() const { return ticks_; }

  Tick nextTick() {
    Tick tick;
    tick.trusted = !oneIn(8);
    for (std::size_t p = 0; p < processes; ++p) {
      if (oneIn(25)) launches_.at(p) += 1;  // another launch under the same identifier
      if (oneIn(restless_)) processes_.at(p) = sample(p);
      processes_.at(p).launchedAt = 1.0 + launches_.at(p);
      if (!oneIn(12)) tick.samples.push_back(processes_.at(p));
    }
    if (tick.samples.size() > 1 && oneIn(2)) {
      std::swap(tick.samples.front(), tick.samples.back());
    }
    return tick;
  }

 private:
  static constexpr std::size_t processes = 4;  // a native client, two browsers, a web app

  // The generator alone is the same on every machine; the standard's distributions are not.
  std::size_t below(std::size_t limit) { return random_() % limit; }
  bool oneIn(std::size_t chance) { return below(chance) == 0; }

  AppSample sample(std::size_t process) {
    AppSample sample;
    sample.pid = static_cast<std::int32_t>(process) + 1;
    sample.browser = process != 0;
    sample.standalone = process == 3;
    if (oneIn(2)) sample.applicationBundleID = "org.example.Client";
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
    for (std::size_t left = below(4); left > 0; --left) {
      sample.surfaces.push_back(surface(process));
    }
    return sample;
  }

  Surface surface(std::size_t process) {
    constexpr std::array states{CallState::joined, CallState::joined, CallState::left,
                                CallState::unknown};
    constexpr std::array views{"v1", "v2", "v3"};
    constexpr std::array keys{"meet:a", "meet:b", "meet:a", "zoom:1"};
    Surface surface;
    surface.window = oneIn(2) ? "w1" : "w2";
    surface.element = views.at(below(views.size()));
    surface.conference.key = process == 0 && oneIn(2) ? "" : keys.at(below(keys.size()));
    surface.conference.provider = surface.conference.key == "zoom:1" ? "zoom" : "meet";
    surface.state = states.at(below(states.size()));
    surface.title = oneIn(2) ? "Standup" : "Review";
    surface.mediaActive = oneIn(2);
    return surface;
  }

  std::mt19937 random_;
  std::size_t restless_;
  std::size_t ticks_ = 0;
  std::array<int, processes> launches_{};
  std::array<AppSample, processes> processes_;
};

// What was told of the sessions of one world so far.
struct Story {
  struct Session {
    std::int64_t sequence = 0;
    bool ended = false;
  };
  std::map<std::string, Session> sessions;  // by session identifier
  std::map<std::string, std::string> open;  // session by call key

  // Says what is wrong with an observation that follows; nothing when all is well.
  std::string follow(const Observation& observation) {
    const auto& [call, state] = observation;
    const auto [entry, begins] = sessions.try_emplace(call.id);
    Session& session = entry->second;
    if (session.ended) return "a session that left says something more";
    if (call.sequence != ++session.sequence) return "a sequence has a gap or does not start at 1";
    if (begins) {
      if (state != CallState::joined) return "a session does not begin joined";
      if (!open.emplace(call.conference.key, call.id).second) return "two sessions have one key";
    }
    const auto holder = open.find(call.conference.key);
    if (holder == open.end() || holder->second != call.id) return "a session changed its key";
    if (state == CallState::left) {
      session.ended = true;
      open.erase(holder);
    }
    return "";
  }

  // Whether the calls that the tracker holds are those whose last word was not "left".
  [[nodiscard]] bool holds(const std::map<std::string, Call>& calls) const {
    return std::ranges::equal(calls, open, [](const auto& held, const auto& told) {
      return held.first == told.first && held.second.conference.key == told.first &&
             held.second.id == told.second;
    });
  }
};

bool running(const Call& call, const Tick& tick) {
  return std::ranges::any_of(tick.samples, [&](const AppSample& sample) {
    return sample.pid == call.pid && sample.launchedAt == call.launchedAt;
  });
}

// Compares everything that a call holds but its sequence and its count of absences.
bool sameButCounts(const Call& a, const Call& b) {
  return a.id == b.id && a.pid == b.pid && a.launchedAt == b.launchedAt && a.browser == b.browser &&
         a.conference == b.conference && a.window == b.window && a.element == b.element &&
         a.heardClientAudio == b.heardClientAudio &&
         a.applicationBundleID == b.applicationBundleID && a.title == b.title &&
         a.mediaActive == b.mediaActive;
}

bool sameObservations(const std::vector<Observation>& a, const std::vector<Observation>& b) {
  return std::ranges::equal(a, b, [](const Observation& x, const Observation& y) {
    return x.state == y.state && x.call.sequence == y.call.sequence &&
           x.call.missing == y.call.missing && sameButCounts(x.call, y.call);
  });
}

// What must hold of one tick, given the calls before and after it: what is wrong, or nothing.
std::string wrongIn(const Tick& tick, const std::map<std::string, Call>& before,
                    const std::map<std::string, Call>& after,
                    const std::vector<Observation>& observations) {
  std::map<std::string_view, std::vector<CallState>> said;
  for (const auto& [call, state] : observations) said[call.id].push_back(state);
  for (const auto& [key, call] : before) {
    const auto words = said.find(call.id);
    if (words == said.end() || words->second.size() != 1) return key + " is not told once a tick";
    const CallState state = words->second.front();
    if (!tick.trusted && state != CallState::unknown) return key + " is judged without trust";
    if (tick.trusted && !running(call, tick) && state != CallState::left) {
      return key + " outlives its process";
    }
  }
  for (const auto& [key, call] : after) {
    if (call.missing < 0 || call.missing > 1) return key + " was missed too often to be open";
  }
  if (tick.trusted) return "";
  const bool untouched = std::ranges::equal(before, after, [](const auto& was, const auto& is) {
    return was.first == is.first && sameButCounts(was.second, is.second) &&
           is.second.sequence == was.second.sequence + 1 && is.second.missing == 0;
  });
  if (!untouched) return "a tick without trust changed a call";
  return observations.size() == before.size() ? "" : "a call was told that was not open";
}

// How often what the properties speak of came up: worlds in which nothing happens prove nothing.
struct Met {
  int sessions = 0, ended = 0, stillOpen = 0, vanished = 0, untrusted = 0, missed = 0;
};

// Plays one world and says what was wrong in it, or nothing.
std::string play(unsigned seed, Met& met) {
  scripted::reset();
  World world(seed);
  Tracker tracker;
  Tracker sameTracker;  // is told the same, and draws the same identifiers
  Story story;
  for (std::size_t number = 0; number < world.ticks(); ++number) {
    const Tick tick = world.nextTick();
    const std::map<std::string, Call> before = tracker.calls;
    const auto identifiersMade = scripted::desktop().identifiersMade;
    const std::vector<Observation> observations = tracker.apply(tick.samples, tick.trusted);
    scripted::desktop().identifiersMade = identifiersMade;
    const std::vector<Observation> repeated = sameTracker.apply(tick.samples, tick.trusted);

    std::string wrong = wrongIn(tick, before, tracker.calls, observations);
    for (const Observation& observation : observations) {
      if (wrong.empty()) wrong = story.follow(observation);
    }
    if (wrong.empty() && !story.holds(tracker.calls)) wrong = "calls and their last words differ";
    if (wrong.empty() && !sameObservations(observations, repeated)) {
      wrong = "the same ticks were told differently";
    }
    if (!wrong.empty()) return "tick " + std::to_string(number) + ": " + wrong;

    met.untrusted += !tick.trusted && !before.empty() ? 1 : 0;
    for (const auto& [key, call] : before) {
      met.vanished += tick.trusted && !running(call, tick) ? 1 : 0;
      met.missed += call.missing > 0 ? 1 : 0;
    }
  }
  met.sessions += static_cast<int>(story.sessions.size());
  met.stillOpen += static_cast<int>(story.open.size());
  met.ended += static_cast<int>(story.sessions.size() - story.open.size());
  return "";
}

TEST(TrackerInAnyWorld, TellsEverySessionWithoutGapsEndsItOnceAndRepeatsItself) {
  Met met;
  for (unsigned seed = 1; seed <= worlds; ++seed) {
    const std::string wrong = play(seed, met);
    ASSERT_TRUE(wrong.empty()) << "world " << seed << ", " << wrong;
  }
  constexpr int often = worlds / 4;
  EXPECT_GE(met.sessions, often);
  EXPECT_GE(met.ended, often);
  EXPECT_GE(met.stillOpen, often);
  EXPECT_GE(met.vanished, often);
  EXPECT_GE(met.untrusted, often);
  EXPECT_GE(met.missed, often);
}

}  // namespace
}  // namespace callmonitor
