// All pairs are ranked, best first; each then takes what is still free.
#include "platform/linux/window_match.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <tuple>

#include "text/unicode.h"

namespace callmonitor::platform {
namespace {

// UTF-8 of the marks that steer the direction of text: U+200E, U+200F, U+202A..U+202E,
// U+2066..U+2069, and U+061C.
constexpr std::array<std::string_view, 12> directionMarks{"\u200E", "\u200F", "\u202A", "\u202B",
                                                          "\u202C", "\u202D", "\u202E", "\u2066",
                                                          "\u2067", "\u2068", "\u2069", "\u061C"};

// Between a page's title, what is added to it, and the browser's name.
constexpr std::string_view separator = " - ";

// Sum of the edges' distances up to which two places count as the same one: a window manager's
// border and a shadow that only one side counts.
constexpr std::int64_t samePlace = 64;
// Farther than any screen: a place that is not known decides nothing.
constexpr std::int64_t unknownDistance = 1LL << 40;

std::int64_t distance(const std::optional<Extents>& left, const std::optional<Extents>& right) {
  if (!left || !right) return unknownDistance;
  const auto apart = [](std::int64_t one, std::int64_t other) { return std::abs(one - other); };
  return apart(left->x, right->x) + apart(left->y, right->y) +
         apart(std::int64_t{left->x} + left->width, std::int64_t{right->x} + right->width) +
         apart(std::int64_t{left->y} + left->height, std::int64_t{right->y} + right->height);
}

struct Pair {
  std::size_t frame = 0;
  std::size_t window = 0;
  NameAgreement agreement = NameAgreement::none;
  std::int64_t distance = unknownDistance;
};

// Whether `other` would give one of the two another partner for as good a reason. Among pairs that
// only place speaks for, every other one is a rival: windows often lie on top of each other.
bool rivals(const Pair& one, const Pair& other) {
  if ((one.frame == other.frame) == (one.window == other.window)) return false;
  return one.agreement == other.agreement &&
         (one.agreement == NameAgreement::none || one.distance == other.distance);
}

// Which frames and windows have found a partner.
struct Taken {
  std::vector<bool> frames;
  std::vector<bool> windows;

  [[nodiscard]] bool either(const Pair& pair) const {
    return frames[pair.frame] || windows[pair.window];
  }
};

// Whether nothing but chance would choose this pair. Of two windows with the same name in the same
// place each stays in doubt even when the other has been given away; place alone has a doubt only
// among those whose names have found them no partner.
bool doubtful(const Pair& pair, const std::vector<Pair>& pairs, const Taken& taken) {
  const bool named = pair.agreement != NameAgreement::none;
  return std::any_of(pairs.begin(), pairs.end(), [&](const Pair& each) {
    return rivals(pair, each) && (named || !taken.either(each));
  });
}

std::vector<Pair> rankedPairs(const std::vector<MatchCandidate>& frames,
                              const std::vector<MatchCandidate>& windows) {
  std::vector<Pair> pairs;
  for (std::size_t frame = 0; frame < frames.size(); ++frame) {
    if (comparableName(frames[frame].name).empty()) continue;
    for (std::size_t window = 0; window < windows.size(); ++window) {
      const auto agreement = nameAgreement(frames[frame].name, windows[window].name);
      const auto apart = distance(frames[frame].extents, windows[window].extents);
      if (agreement == NameAgreement::none && apart > samePlace) continue;
      pairs.push_back({frame, window, agreement, apart});
    }
  }
  std::sort(pairs.begin(), pairs.end(), [](const Pair& one, const Pair& other) {
    return std::make_tuple(-static_cast<int>(one.agreement), one.distance, one.frame, one.window) <
           std::make_tuple(-static_cast<int>(other.agreement), other.distance, other.frame,
                           other.window);
  });
  return pairs;
}

}  // namespace

std::string withoutDirectionMarks(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const auto* mark = std::find_if(directionMarks.begin(), directionMarks.end(),
                                    [&](std::string_view each) { return text.starts_with(each); });
    const std::size_t length = mark != directionMarks.end() ? mark->size() : 1;
    if (mark == directionMarks.end()) result.push_back(text.front());
    text.remove_prefix(length);
  }
  return result;
}

std::string comparableName(std::string_view name) {
  return singleSpaced(withoutDirectionMarks(name));
}

NameAgreement nameAgreement(std::string_view frame, std::string_view window) {
  const std::string spoken = comparableName(frame);
  const std::string shown = comparableName(window);
  if (spoken.empty() || shown.empty()) return NameAgreement::none;
  if (spoken == shown) return NameAgreement::equal;
  // A window without the browser's name in its title has the additions at its end.
  if (spoken.starts_with(shown + std::string(separator))) return NameAgreement::withAddition;
  const std::size_t split = shown.rfind(separator);
  if (split == std::string::npos || split == 0) return NameAgreement::none;
  const std::string_view title = std::string_view(shown).substr(0, split + separator.size());
  const std::string_view program = std::string_view(shown).substr(split);
  const bool between =
      spoken.size() > shown.size() && spoken.starts_with(title) && spoken.ends_with(program);
  return between ? NameAgreement::withAddition : NameAgreement::none;
}

std::vector<WindowMatch> matchWindows(const std::vector<MatchCandidate>& frames,
                                      const std::vector<MatchCandidate>& windows) {
  const std::vector<Pair> pairs = rankedPairs(frames, windows);
  Taken taken{std::vector<bool>(frames.size()), std::vector<bool>(windows.size())};
  std::vector<WindowMatch> matches;
  for (const Pair& pair : pairs) {
    if (taken.either(pair)) continue;
    const bool named = pair.agreement != NameAgreement::none;
    const bool doubt = doubtful(pair, pairs, taken);
    if (!named && doubt) continue;
    taken.frames[pair.frame] = taken.windows[pair.window] = true;
    matches.push_back({pair.frame, pair.window, named && !doubt});
  }
  std::sort(matches.begin(), matches.end(), [](const WindowMatch& one, const WindowMatch& other) {
    return one.frame < other.frame;
  });
  return matches;
}

bool partnersMissing(const std::vector<MatchCandidate>& frames,
                     const std::vector<MatchCandidate>& windows,
                     const std::vector<WindowMatch>& matches) {
  const auto missing = [&](const std::vector<MatchCandidate>& list,
                           std::size_t WindowMatch::*position) {
    for (std::size_t at = 0; at < list.size(); ++at) {
      const bool found = std::any_of(matches.begin(), matches.end(), [&](const WindowMatch& match) {
        return match.*position == at;
      });
      if (list[at].needsPartner && !found) return true;
    }
    return false;
  };
  return missing(frames, &WindowMatch::frame) && missing(windows, &WindowMatch::window);
}

bool namesMeet(const std::vector<MatchCandidate>& frames,
               const std::vector<MatchCandidate>& windows) {
  return std::any_of(frames.begin(), frames.end(), [&](const MatchCandidate& frame) {
    return frame.needsPartner &&
           std::any_of(windows.begin(), windows.end(), [&](const MatchCandidate& window) {
             return window.needsPartner &&
                    nameAgreement(frame.name, window.name) != NameAgreement::none;
           });
  });
}

}  // namespace callmonitor::platform
