// Reads the frames, remembers the pairs, and leaves the choice of new pairs to window_match.h.
#include "platform/linux/frame_windows.h"

#include <algorithm>
#include <string>

#include "platform/linux/desktop.h"
#include "platform/linux/role_map.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// A frame that is not known to have a window.
struct LooseFrame {
  ObjectName object;
  std::string name;
  bool hasChildren = false;
};

// Fills `loose` when the object is a frame. An object that is gone or is no frame is passed over.
std::int32_t readFrame(Desktop& here, const BusTarget& target, std::vector<LooseFrame>& loose) {
  const auto passable = [](std::int32_t result) {
    return result == code::invalidElement || result == code::attributeUnsupported;
  };
  const auto role = readRole(here.bus, target);
  if (role.code != code::success) return passable(role.code) ? code::success : role.code;
  if (!windowRole(role.value)) return code::success;
  auto properties = readProperties(here.bus, target);
  if (properties.code != code::success) {
    return passable(properties.code) ? code::success : properties.code;
  }
  loose.push_back({target.object, std::move(properties.value.name),
                   properties.value.childCount.value_or(0) != 0});
  return code::success;
}

std::vector<ClientWindow> windowsOf(std::vector<ClientWindow> windows, std::int32_t pid) {
  std::erase_if(windows, [&](const ClientWindow& each) { return each.pid != pid; });
  return windows;
}

bool lists(const std::vector<ClientWindow>& windows, std::uint32_t id) {
  return std::any_of(windows.begin(), windows.end(),
                     [&](const ClientWindow& each) { return each.id == id; });
}

bool taken(const FrameMemory& memory, std::uint32_t id) {
  return std::any_of(memory.windowOf.begin(), memory.windowOf.end(),
                     [&](const auto& each) { return each.second == id; });
}

void forgetClosed(FrameMemory& memory, const std::vector<ClientWindow>& all) {
  std::erase_if(memory.windowOf, [&](const auto& each) { return !lists(all, each.second); });
}

// Pairs loose frames with windows that are not taken. Certain pairs are remembered.
std::vector<FrameWindow> pairUp(Desktop& here, const std::vector<LooseFrame>& loose,
                                const std::vector<ClientWindow>& windows, std::uint64_t limit) {
  std::vector<MatchCandidate> frames;
  for (const LooseFrame& each : loose) {
    MatchCandidate candidate{each.name, std::nullopt};
    // The extra frames of a browser have no name; their place is of no interest.
    if (!each.name.empty()) {
      const auto extents = readExtents(here.bus, {each.object, limit});
      if (extents.code == code::success) candidate.extents = extents.value;
    }
    frames.push_back(std::move(candidate));
  }
  std::vector<MatchCandidate> candidates;
  std::vector<std::uint32_t> numbers;
  for (const ClientWindow& each : windows) {
    if (taken(here.frames, each.id)) continue;
    candidates.push_back({each.name.value_or(""), each.extents});
    numbers.push_back(each.id);
  }
  std::vector<FrameWindow> pairs;
  for (const WindowMatch& match : matchWindows(frames, candidates)) {
    const ObjectName& frame = loose[match.frame].object;
    pairs.push_back({frame, numbers[match.window]});
    if (match.certain) here.frames.windowOf.emplace(frame, numbers[match.window]);
  }
  return pairs;
}

// Without a list of windows a named frame with something in it is a window.
std::vector<FrameWindow> namedFrames(const std::vector<LooseFrame>& loose) {
  std::vector<FrameWindow> windows;
  for (const LooseFrame& each : loose) {
    if (!each.name.empty() && each.hasChildren) windows.push_back({each.object, std::nullopt});
  }
  return windows;
}

}  // namespace

Answer<std::vector<FrameWindow>> readWindows(Desktop& here, const BusTarget& target,
                                             std::int32_t pid) {
  if (here.frames.generation != here.bus.generation) here.frames = {here.bus.generation, {}};
  const auto children = readChildren(here.bus, target);
  if (children.code != code::success) return {children.code, {}};
  const auto all = clientWindows(*here.x11);
  if (all) forgetClosed(here.frames, *all);

  std::vector<FrameWindow> windows;
  std::vector<LooseFrame> loose;
  for (const ObjectName& child : children.value) {
    const auto known = here.frames.windowOf.find(child);
    if (known != here.frames.windowOf.end()) {
      windows.push_back({child, known->second});
      continue;
    }
    const std::int32_t outcome = readFrame(here, {child, target.limit}, loose);
    if (outcome != code::success) return {outcome, {}};
  }
  if (!all) {
    const auto named = namedFrames(loose);
    windows.insert(windows.end(), named.begin(), named.end());
    return {code::success, std::move(windows)};
  }
  const auto own = windowsOf(*all, pid);
  const auto paired = pairUp(here, loose, own, target.limit);
  windows.insert(windows.end(), paired.begin(), paired.end());
  const bool shown =
      std::any_of(own.begin(), own.end(), [](const ClientWindow& each) { return each.normal; });
  if (shown && windows.empty()) return {code::failure, {}};
  std::sort(windows.begin(), windows.end(), [&](const FrameWindow& one, const FrameWindow& other) {
    const auto place = [&](const FrameWindow& each) {
      return std::find(children.value.begin(), children.value.end(), each.frame);
    };
    return place(one) < place(other);
  });
  return {code::success, std::move(windows)};
}

Answer<ObjectName> readFocusedWindow(Desktop& here, const BusTarget& target, std::int32_t pid) {
  const auto active = activeWindow(*here.x11);
  if (!active) return {code::noValue, {}};
  auto windows = readWindows(here, target, pid);
  if (windows.code != code::success) return {windows.code, {}};
  for (FrameWindow& each : windows.value) {
    if (each.number == active) return {code::success, std::move(each.frame)};
  }
  return {code::noValue, {}};
}

std::optional<std::string> shownName(Desktop& here, const ObjectName& frame) {
  if (here.frames.generation != here.bus.generation) return std::nullopt;
  const auto known = here.frames.windowOf.find(frame);
  if (known == here.frames.windowOf.end()) return std::nullopt;
  return windowName(*here.x11, known->second);
}

}  // namespace callmonitor::platform
