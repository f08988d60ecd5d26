#include "tracking/tracker.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <optional>

#include "platform/platform.h"
#include "tracking/surface_matching.h"

namespace callmonitor {
namespace {

// Overflow cannot happen in practice, and a stream that counts wrongly would be a lie.
void increment(std::int64_t& number) {
  if (number == std::numeric_limits<std::int64_t>::max()) std::abort();
  ++number;
}

bool sameProcess(const Call& call, const AppSample& sample) {
  return call.pid == sample.pid && call.launchedAt == sample.launchedAt;
}

// One tick in progress.
struct Tick {
  std::map<std::string, Call>& calls;
  const std::vector<AppSample>& samples;
  std::vector<Observation> observations;

  void observe(Call& call, CallState state) {
    increment(call.sequence);
    observations.push_back({call, state});
  }

  // Says something of a call; one that has left is forgotten.
  void conclude(const std::string& key, CallState state) {
    Call& call = calls.at(key);
    observe(call, state);
    if (state == CallState::left) calls.erase(key);
  }

  // Some view of this tick, in whichever application, shows the call's meeting joined.
  [[nodiscard]] bool joinedInSomeView(const Call& call) const {
    return std::ranges::any_of(samples, [&](const AppSample& sample) {
      return std::ranges::any_of(sample.surfaces, [&](const Surface& surface) {
        return surface.state == CallState::joined && surface.conference.key == call.conference.key;
      });
    });
  }

  // The call's own view is gone for certain while the meeting is joined in another one: that one
  // is a session of its own.
  [[nodiscard]] bool replacedByAnotherView(const Call& call, const AppSample& sample) const {
    return sample.viewInventoryComplete && sample.closedViews.contains(call.element) &&
           joinedInSomeView(call);
  }

  void judge(const std::string& key, const AppSample& sample, std::vector<bool>& claimed) {
    Call& call = calls.at(key);
    if (!sample.windows) {
      conclude(key, CallState::unknown);
      return;
    }
    if (sample.audio && sample.audio->active()) call.heardClientAudio = true;

    if (const std::optional<std::size_t> position = surfaceOf(call, sample, claimed)) {
      const Surface& surface = sample.surfaces[*position];
      claimed[*position] = true;
      call.window = surface.window;
      call.element = surface.element;
      call.title = surface.title;
      call.mediaActive = surface.mediaActive;
      call.missing = 0;
      conclude(key, surface.state);
      return;
    }
    if (replacedByAnotherView(call, sample)) {
      conclude(key, CallState::left);
      return;
    }
    if (absenceCounts(call, sample)) {
      increment(call.missing);
    } else {
      call.missing = 0;
    }
    conclude(key, call.missing < missingThreshold ? CallState::unknown : CallState::left);
  }

  // Native calls are each a meeting of their own, even where the client gives no identity. In a
  // browser a second view of a meeting whose first may still live is no second call.
  void open(const AppSample& sample, const Surface& surface) {
    if (sample.browser && calls.contains(surface.conference.key)) return;
    Call call;
    call.id = platform::randomUUID();
    call.pid = sample.pid;
    call.launchedAt = sample.launchedAt;
    call.browser = sample.browser;
    call.conference = surface.conference;
    if (!sample.browser) {
      call.conference.key = surface.conference.provider + ":native-" + call.id;
    }
    call.window = surface.window;
    call.element = surface.element;
    call.heardClientAudio = sample.audio && sample.audio->active();
    call.applicationBundleID = sample.applicationBundleID;
    call.title = surface.title;
    call.mediaActive = surface.mediaActive;
    const std::string key = call.conference.key;
    calls.insert_or_assign(key, std::move(call));
    conclude(key, CallState::joined);
  }

  void visit(const AppSample& sample) {
    std::vector<std::string> keys;
    for (const auto& [key, call] : calls) {
      if (sameProcess(call, sample)) keys.push_back(key);
    }
    std::vector<bool> claimed(sample.surfaces.size(), false);
    for (const std::string& key : keys) judge(key, sample, claimed);
    for (std::size_t i = 0; i < sample.surfaces.size(); ++i) {
      if (!claimed[i] && sample.surfaces[i].state == CallState::joined) {
        open(sample, sample.surfaces[i]);
      }
    }
  }
};

}  // namespace

std::vector<Observation> Tracker::apply(const std::vector<AppSample>& samples, bool trusted) {
  Tick tick{calls, samples, {}};
  std::vector<std::string> keys;
  for (const auto& [key, call] : calls) keys.push_back(key);
  for (const std::string& key : keys) {
    Call& call = calls.at(key);
    if (!trusted) {
      call.missing = 0;
      tick.conclude(key, CallState::unknown);
    } else if (std::ranges::none_of(
                   samples, [&](const AppSample& sample) { return sameProcess(call, sample); })) {
      tick.conclude(key, CallState::left);
    }
  }
  if (trusted) {
    for (const AppSample& sample : samples) tick.visit(sample);
  }
  return std::move(tick.observations);
}

bool Tracker::tracks(std::int32_t pid) const {
  return std::ranges::any_of(calls, [&](const auto& entry) { return entry.second.pid == pid; });
}

}  // namespace callmonitor
