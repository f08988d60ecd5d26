#include "tracking/surface_matching.h"

#include <algorithm>

namespace callmonitor {
namespace {

// What one rule leaves: how many surfaces, and the last of them.
struct Matches {
  std::size_t count = 0;
  std::size_t position = 0;
  [[nodiscard]] std::optional<std::size_t> single() const {
    return count == 1 ? std::optional(position) : std::nullopt;
  }
};

template <class Rule>
Matches unclaimedMatches(const AppSample& sample, const std::vector<bool>& claimed, Rule rule) {
  Matches matches;
  for (std::size_t i = 0; i < sample.surfaces.size(); ++i) {
    if (claimed[i] || !rule(sample.surfaces[i])) continue;
    ++matches.count;
    matches.position = i;
  }
  return matches;
}

bool silent(const AppSample& sample) {
  return sample.audio && !sample.audio->active();
}

// A browser's page that was heard, is silent now, was positively closed, and stands nowhere else:
// without every one of these a background tab would end its call.
bool pageGone(const Call& call, const AppSample& sample) {
  return silent(sample) && call.heardClientAudio && sample.viewInventoryComplete &&
         sample.closedViews.contains(call.element) &&
         std::ranges::none_of(sample.surfaces, [&](const Surface& surface) {
           return surface.conference == call.conference;
         });
}

}  // namespace

std::optional<std::size_t> surfaceOf(const Call& call, const AppSample& sample,
                                     const std::vector<bool>& claimed) {
  // A native call's key is made from its session, so no surface carries it: there the provider
  // decides, and element and window tell two calls apart.
  const auto candidate = [&](const Surface& surface) {
    return call.browser ? surface.conference == call.conference
                        : surface.conference.provider == call.conference.provider;
  };
  const auto joined = [&](const Surface& surface) {
    return candidate(surface) && surface.state == CallState::joined;
  };

  const Matches sameElement = unclaimedMatches(sample, claimed, [&](const Surface& surface) {
    return candidate(surface) && surface.element == call.element;
  });
  if (sameElement.single()) return sameElement.single();

  const Matches sameWindow = unclaimedMatches(sample, claimed, [&](const Surface& surface) {
    return joined(surface) && surface.window == call.window;
  });
  if (sameWindow.single()) return sameWindow.single();

  // The view of a native call was replaced by a notice in the same window.
  if (!call.browser && sample.viewInventoryComplete && sameWindow.count == 0 &&
      sample.closedViews.contains(call.element)) {
    const Matches notice = unclaimedMatches(sample, claimed, [&](const Surface& surface) {
      return surface.conference.provider == call.conference.provider &&
             surface.window == call.window && surface.state == CallState::left;
    });
    if (notice.single()) return notice.single();
  }

  // The meeting's tab moved to another window.
  if (call.browser && sample.windows && !sample.windows->contains(call.window)) {
    return unclaimedMatches(sample, claimed, joined).single();
  }
  return std::nullopt;
}

bool absenceCounts(const Call& call, const AppSample& sample) {
  const bool audioFree = !sample.audio || silent(sample);
  const bool windowGone = sample.closedWindows.contains(call.window) && audioFree;
  if (!call.browser) {
    return windowGone && std::ranges::none_of(sample.surfaces, [](const Surface& surface) {
             return surface.state == CallState::joined;
           });
  }
  const bool noWindows = sample.windows && sample.windows->empty();
  if (sample.standalone || noWindows) return windowGone || pageGone(call, sample);
  return pageGone(call, sample);
}

}  // namespace callmonitor
