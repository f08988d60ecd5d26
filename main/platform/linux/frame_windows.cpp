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
  Standing standing = Standing::window;
};

// Without a window server to tell, a named frame with something in it is a window. Where there is
// one, such a frame has a window that is merely not found yet.
bool plainlyWindow(const LooseFrame& frame) {
  return frame.standing == Standing::window && frame.hasChildren;
}

// Fills `loose` when the object is a frame with a name. One that is gone or is no frame is passed
// over.
std::int32_t readFrame(Desktop& here, const BusTarget& target, std::vector<LooseFrame>& loose) {
  const auto passable = [](std::int32_t result) {
    return result == code::invalidElement || result == code::attributeUnsupported;
  };
  auto properties = readProperties(here.bus, target);
  if (properties.code != code::success) {
    return passable(properties.code) ? code::success : properties.code;
  }
  // Beside each of its windows a browser has two frames that have neither a name nor a window.
  if (properties.value.name.empty()) return code::success;
  const auto role = readRole(here.bus, target);
  if (role.code != code::success) return passable(role.code) ? code::success : role.code;
  const Standing standing = standingOf(role.value);
  if (standing == Standing::part) return code::success;
  loose.push_back({target.object, std::move(properties.value.name),
                   properties.value.childCount.value_or(0) != 0, standing});
  return code::success;
}

// The windows of the process that no frame has for certain.
std::vector<ClientWindow> freeWindows(const FrameMemory& memory,
                                      const WindowedApplication& application) {
  std::vector<ClientWindow> windows = *application.listed;
  std::erase_if(windows, [&](const ClientWindow& each) {
    return each.pid != application.pid || paired(memory, each.id);
  });
  return windows;
}

Answer<std::vector<MatchCandidate>> frameCandidates(Desktop& here, const BusTarget& root,
                                                    const std::vector<LooseFrame>& loose) {
  std::vector<MatchCandidate> frames;
  for (const LooseFrame& each : loose) {
    MatchCandidate candidate{each.name, std::nullopt, plainlyWindow(each)};
    const auto extents = readExtents(here.bus, root.at(each.object));
    if (extents.code == code::cannotComplete) return {extents.code, {}};
    if (extents.code == code::success) candidate.extents = extents.value;
    frames.push_back(std::move(candidate));
  }
  return {code::success, std::move(frames)};
}

// Pairs loose frames with windows that are not taken and remembers the pairs.
std::int32_t pairUp(Desktop& here, const WindowedApplication& application,
                    const std::vector<LooseFrame>& loose) {
  const auto frames = frameCandidates(here, application.root, loose);
  if (frames.code != code::success) return frames.code;
  const auto windows = freeWindows(here.frames, application);
  std::vector<MatchCandidate> candidates;
  candidates.reserve(windows.size());
  for (const ClientWindow& each : windows) {
    candidates.push_back({each.name.value_or(""), each.extents, each.normal});
  }
  const auto matches = matchWindows(frames.value, candidates);
  for (const WindowMatch& match : matches) {
    FramePairs& pairs = match.certain ? here.frames.certain : here.frames.passing;
    pairs.insert_or_assign(loose[match.frame].object, windows[match.window].id);
  }
  return partnersMissing(frames.value, candidates, matches) ? code::failure : code::success;
}

// Whether the frame's window might as well be another frame's: windows of one name in one place.
bool pairedByChance(const FrameMemory& memory, const ObjectName& frame) {
  const auto sameBus = [&](const auto& pair) { return pair.first.bus == frame.bus; };
  return !memory.certain.contains(frame) &&
         std::count_if(memory.passing.begin(), memory.passing.end(), sameBus) > 1;
}

// The windows that no application of the accessibility tree owns by its process id. A program in a
// process namespace of its own gives its windows the id that it has in there, which here is no
// process's or a stranger's.
std::vector<MatchCandidate> doubtfulWindows(const Desktop& here,
                                            const std::vector<ClientWindow>& listed) {
  const auto& registered = here.applications.registered;
  std::vector<MatchCandidate> windows;
  for (const ClientWindow& each : listed) {
    const bool owned =
        std::any_of(registered.begin(), registered.end(),
                    [&](const RegisteredApplication& one) { return each.pid == one.pid; });
    if (!owned) windows.push_back({each.name.value_or(""), each.extents, each.normal});
  }
  return windows;
}

// Whether the application may own windows that say they are somebody else's.
bool windowsElsewhere(const Desktop& here, const WindowedApplication& application,
                      const std::vector<LooseFrame>& loose) {
  std::vector<MatchCandidate> frames;
  for (const LooseFrame& each : loose) {
    frames.push_back({each.name, std::nullopt, plainlyWindow(each)});
  }
  return namesMeet(frames, doubtfulWindows(here, *application.listed));
}

bool showsWindow(const WindowedApplication& application) {
  return std::any_of(
      application.listed->begin(), application.listed->end(),
      [&](const ClientWindow& each) { return each.pid == application.pid && each.normal; });
}

// Reads the children that are not known to be windows. Anything but success makes the list of
// windows a failure.
Answer<std::vector<LooseFrame>> readLoose(Desktop& here, const BusTarget& root,
                                          const std::vector<ObjectName>& children) {
  std::vector<LooseFrame> loose;
  for (const ObjectName& child : children) {
    if (here.frames.certain.contains(child)) continue;
    const std::int32_t outcome = readFrame(here, root.at(child), loose);
    if (outcome != code::success) return {outcome, {}};
  }
  return {code::success, std::move(loose)};
}

// Drops what an earlier reading knew and this one does not bear out.
void forgetOutdated(FrameMemory& memory, const WindowedApplication& application,
                    const std::vector<ObjectName>& children) {
  forgetClosedFrames(memory, application.root.object.bus, children);
  if (application.listed) forgetClosedWindows(memory, *application.listed);
  std::erase_if(memory.passing,
                [&](const auto& pair) { return pair.first.bus == application.root.object.bus; });
}

}  // namespace

Answer<std::vector<FrameWindow>> readWindows(Desktop& here,
                                             const WindowedApplication& application) {
  if (here.frames.generation != here.bus.generation) here.frames = {here.bus.generation, {}, {}};
  const auto children = readChildren(here.bus, application.root);
  if (children.code != code::success) return {children.code, {}};
  forgetOutdated(here.frames, application, children.value);
  const auto loose = readLoose(here, application.root, children.value);
  if (loose.code != code::success) return {loose.code, {}};
  if (application.listed) {
    const std::int32_t outcome = pairUp(here, application, loose.value);
    if (outcome != code::success) return {outcome, {}};
  }

  std::vector<FrameWindow> windows;
  for (const ObjectName& child : children.value) {
    if (const auto number = windowOf(here.frames, child)) {
      windows.push_back({child, number});
    } else if (!application.listed &&
               std::any_of(loose.value.begin(), loose.value.end(), [&](const LooseFrame& each) {
                 return each.object == child && plainlyWindow(each);
               })) {
      windows.push_back({child, std::nullopt});
    }
  }
  if (windows.empty() && application.listed) {
    if (showsWindow(application)) return {};
    if (windowsElsewhere(here, application, loose.value)) return {code::cannotComplete, {}};
  }
  return {code::success, std::move(windows)};
}

Answer<ObjectName> readFocusedWindow(Desktop& here, const WindowedApplication& application,
                                     std::uint32_t active) {
  auto windows = readWindows(here, application);
  if (windows.code != code::success) return {windows.code, {}};
  for (FrameWindow& each : windows.value) {
    if (each.number != active) continue;
    if (pairedByChance(here.frames, each.frame)) break;
    return {code::success, std::move(each.frame)};
  }
  return {code::noValue, {}};
}

std::optional<std::string> shownName(Desktop& here, const ObjectName& frame) {
  if (here.frames.generation != here.bus.generation) return std::nullopt;
  const auto window = windowOf(here.frames, frame);
  if (!window) return std::nullopt;
  return windowName(*here.x11, *window);
}

}  // namespace callmonitor::platform
