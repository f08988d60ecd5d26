// A desktop and what happens on it, as plain data: what a scenario file says after loading.
//
// Nothing here knows who plays it. A scenario is a list of changes that make the opening desktop,
// followed by steps of further changes at their times; `world.h` carries them out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace callmonitor::scenario {

// Where every scenario's clocks stand at its second 0.
inline constexpr double startUptime = 1000;       // seconds since boot
inline constexpr double startWallClock = 1.75e9;  // seconds since 1970
// How long before the start the applications of the opening desktop were launched, unless they say
// otherwise, in seconds.
inline constexpr double runningSince = 3600;

// An element that a value refers to: by its name in a description, by its key in an answer.
struct Reference {
  std::string name;
};
using Value = platform::ValueOf<Reference>;

// One element with everything below it. As the subject of a `set` it holds what changes.
struct ElementDescription {
  std::string origin;               // where it stands: "line 12"
  std::string kind;                 // "button", "window", ... or an accessibility role
  std::string name;                 // empty for an element that nothing addresses
  std::optional<std::string> text;  // title or value, whichever its kind shows
  std::map<std::string, Value> attributes;
  // By attribute; the empty name stands for every attribute of the element.
  std::map<std::string, std::int32_t> errors;
  std::map<std::string, double> delays;  // seconds
  // For windows: whether the window server lists it, and under which number.
  std::optional<bool> onScreen;
  std::optional<std::int64_t> number;
  std::vector<ElementDescription> children;
};

// An application as it is started. What is absent is given by the world: the next free process id,
// the usual launch time, and for a relaunch whatever the application had before.
struct ApplicationDescription {
  std::optional<std::int32_t> pid;
  std::optional<std::string> bundle;
  bool withoutBundle = false;
  std::optional<double> launchedAt;  // seconds since 1970
  bool withoutLaunchTime = false;
  bool regular = true;
};

// An entry of a window server's list that was written down. The owner is an application's name.
struct ScreenEntry {
  std::string owner;
  platform::OnScreenWindow window;
};

// The window server's list: derived from the windows of the applications, absent, or written down.
enum class ScreenList { derived, absent, given };

enum class Verb {
  start,     // target: name of the new application; `element.children`: its windows
  relaunch,  // target: application; `element.children`: its windows
  quit,      // target: application
  front,     // target: application, empty for none
  focus,     // target: window
  trust,     // flag
  audio,     // target: bundle identifier or application; `audio` absent: the process goes
  audioEmpty,
  audioAbsent,
  screen,   // `screenList`, `entries`
  add,      // target: element or application; `element.children`
  fill,     // the same, in place of what was there
  replace,  // target: element, which ends; `element.children` stand in its place
  close,    // target: element, which ends
  detach,   // target: element, which leaves the tree but goes on existing
  move,     // target: element; `destination`: element or application
  set,      // target: element; `element`
  fail,     // target, `attribute` (empty: all), `code`
  slow,     // target, `attribute` (empty: all; of an application: of everything in it), `seconds`
  work,     // target, `attribute` (empty: all): neither fails nor is slow any more
};

struct Change {
  std::string origin;
  Verb verb = Verb::start;
  std::string target;
  std::string destination;
  std::string attribute;
  std::int32_t code = 0;
  double seconds = 0;
  bool flag = false;
  ApplicationDescription application;
  ElementDescription element;
  std::optional<platform::AudioProcess> audio;
  ScreenList screenList = ScreenList::derived;
  std::vector<ScreenEntry> entries;
};

// Changes that happen together, once or again and again. Seconds from the start.
struct Step {
  std::string origin;
  double at = 0;
  std::optional<double> every;
  double until = 0;  // the last time at which a repeated step may happen
  std::vector<Change> changes;
};

struct Scenario {
  std::string why;  // one line; empty where the file gives none
  double end = 0;   // seconds from the start
  std::vector<Change> opening;
  std::vector<Step> steps;
};

}  // namespace callmonitor::scenario
