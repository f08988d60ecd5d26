// Reads the frames, remembers the pairs, and leaves the choice of new pairs to window_match.h.
#include "platform/linux/frame_windows.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "platform/linux/desktop.h"
#include "platform/linux/frame_memory.h"
#include "platform/linux/role_map.h"
#include "platform/linux/scan_ahead.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// How many objects are asked ahead of the one whose answer is awaited.
constexpr std::size_t objectsAhead = 32;

// While this stands, several messages to the application may be under way: thirty windows cost a
// few hundred, which one after the other would take longer than a list may.
struct AskingAhead {
  Desktop& here;
  AskingAhead(Desktop& desktop, const BusTarget& root) : here(desktop) {
    endScan(here);
    const std::string& application = root.object.bus;
    if (here.bus.connection && !here.bus.silent.contains(application)) {
      openPipeline(here.bus.pipeline, here.bus.connection.get(), FarEnd::bus, application);
    }
  }
  AskingAhead(const AskingAhead&) = delete;
  AskingAhead& operator=(const AskingAhead&) = delete;
  ~AskingAhead() { endScan(here); }
};

// A frame that is not known to have a window.
struct LooseFrame {
  ObjectName object;
  std::string name;
  bool hasChildren = false;
  Standing standing = Standing::window;
  std::optional<Extents> extents = std::nullopt;
};

// Without a window server to tell, a named frame with something in it is a window. Where there is
// one, such a frame has a window that is merely not found yet.
bool plainlyWindow(const LooseFrame& frame) {
  return frame.standing == Standing::window && frame.hasChildren;
}

const ObjectName& nameOf(const ObjectName& object) {
  return object;
}
const ObjectName& nameOf(const LooseFrame& frame) {
  return frame.object;
}

// Puts a question about the objects from one place on under way, as far as there is room.
template <class Object>
void askNext(Desktop& here, const BusTarget& root, const std::vector<Object>& objects,
             std::size_t at, Question question) {
  const std::size_t end = std::min(objects.size(), at + objectsAhead);
  for (; at < end; ++at) {
    const ObjectName& object = nameOf(objects[at]);
    if (!leadsTo(here.bus.pipeline, object.bus)) continue;
    if (!hasRoom(here.bus.pipeline, root.limit)) return;
    if (!putAhead(here.bus, object, question)) return;
  }
}

// An object that is gone or is no frame is passed over.
bool passable(std::int32_t outcome) {
  return outcome == code::invalidElement || outcome == code::attributeUnsupported;
}

// The objects that have a name. Beside each of its windows a browser has two frames that have
// neither a name nor a window.
Answer<std::vector<LooseFrame>> readNamed(Desktop& here, const BusTarget& root,
                                          const std::vector<ObjectName>& objects) {
  std::vector<LooseFrame> named;
  for (std::size_t at = 0; at < objects.size(); ++at) {
    askNext(here, root, objects, at, Question::properties);
    auto properties = readProperties(here.bus, root.at(objects[at]));
    if (properties.code != code::success) {
      if (passable(properties.code)) continue;
      return {properties.code, {}};
    }
    if (properties.value.name.empty()) continue;
    named.push_back({objects[at], std::move(properties.value.name),
                     properties.value.childCount.value_or(0) != 0});
  }
  return {code::success, std::move(named)};
}

// Those of the objects that are frames.
Answer<std::vector<LooseFrame>> readFrames(Desktop& here, const BusTarget& root,
                                           std::vector<LooseFrame> named) {
  std::vector<LooseFrame> frames;
  for (std::size_t at = 0; at < named.size(); ++at) {
    askNext(here, root, named, at, Question::role);
    const auto role = readRole(here.bus, root.at(named[at].object));
    if (role.code != code::success) {
      if (passable(role.code)) continue;
      return {role.code, {}};
    }
    LooseFrame frame = named[at];
    frame.standing = standingOf(role.value);
    if (frame.standing != Standing::part) frames.push_back(std::move(frame));
  }
  return {code::success, std::move(frames)};
}

// Adds the places of frames. One that cannot be told stays absent.
std::int32_t readPlaces(Desktop& here, const BusTarget& root, std::vector<LooseFrame>& frames) {
  for (std::size_t at = 0; at < frames.size(); ++at) {
    askNext(here, root, frames, at, Question::extents);
    const auto extents = readExtents(here.bus, root.at(frames[at].object));
    if (extents.code == code::cannotComplete) return extents.code;
    if (extents.code == code::success) frames[at].extents = extents.value;
  }
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

std::vector<MatchCandidate> candidatesOf(const std::vector<LooseFrame>& loose) {
  std::vector<MatchCandidate> candidates;
  candidates.reserve(loose.size());
  for (const LooseFrame& each : loose) {
    candidates.push_back({each.name, each.extents, plainlyWindow(each)});
  }
  return candidates;
}

// Pairs loose frames with windows that are not taken and remembers the pairs.
std::int32_t pairUp(Desktop& here, const WindowedApplication& application,
                    std::vector<LooseFrame>& loose) {
  const std::int32_t outcome = readPlaces(here, application.root, loose);
  if (outcome != code::success) return outcome;
  const std::vector<MatchCandidate> frames = candidatesOf(loose);
  const auto windows = freeWindows(here.frames, application);
  std::vector<MatchCandidate> candidates;
  candidates.reserve(windows.size());
  for (const ClientWindow& each : windows) {
    candidates.push_back({each.name.value_or(""), each.extents, each.normal});
  }
  const auto matches = matchWindows(frames, candidates);
  for (const WindowMatch& match : matches) {
    FramePairs& pairs = match.certain ? here.frames.certain : here.frames.passing;
    pairs.insert_or_assign(loose[match.frame].object, windows[match.window].id);
  }
  return partnersMissing(frames, candidates, matches) ? code::failure : code::success;
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
  return namesMeet(candidatesOf(loose), doubtfulWindows(here, *application.listed));
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
  std::vector<ObjectName> unknown;
  for (const ObjectName& child : children) {
    if (!here.frames.certain.contains(child)) unknown.push_back(child);
  }
  auto named = readNamed(here, root, unknown);
  if (named.code != code::success) return named;
  return readFrames(here, root, std::move(named.value));
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
  const AskingAhead asking(here, application.root);
  const auto children = readChildren(here.bus, application.root);
  if (children.code != code::success) return {children.code, {}};
  forgetOutdated(here.frames, application, children.value);
  auto loose = readLoose(here, application.root, children.value);
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
