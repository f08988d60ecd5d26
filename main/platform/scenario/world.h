// The desktop of a scenario as it stands at one moment, and how changes make it another.
//
// Elements are known by keys that are never used twice: an element that ends and comes back under
// its old name is another element. Plain data, for any platform's stand-in to answer from.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platform/scenario/scenario.h"

namespace callmonitor::scenario {

struct WorldElement {
  // Its kind, name, texts, failures and delays; the children stand below.
  ElementDescription description;
  std::string parent;                 // key; empty outside the tree
  std::vector<std::string> children;  // keys
  std::int64_t number = 0;            // of a window, in the window server's list
};

struct WorldApplication {
  std::string name;
  platform::Application application;
  std::string key;                     // of its own element, whose children are its windows
  std::optional<std::string> focused;  // key; absent where the first window is
  double delay = 0;                    // seconds that every read of it takes at least
};

struct World {
  double seconds = 0;  // from the start
  bool trusted = true;
  std::vector<WorldApplication> applications;
  std::string front;  // an application's name, empty for none
  std::optional<std::vector<platform::AudioProcess>> audio;
  ScreenList screenList = ScreenList::derived;
  std::vector<ScreenEntry> screenEntries;

  std::map<std::string, WorldElement, std::less<>> elements;  // by key
  std::map<std::string, std::string, std::less<>> keys;       // of the names in use
  // The elements that changed, came or went since somebody last cleared this.
  std::set<std::string> touched;

  std::int32_t lastPid = 100;
  std::int64_t lastWindowNumber = 0;
  std::map<std::string, int> keysMade;  // how often a key was wanted
};

// Carries one change out. Absent when it worked; else why it cannot happen, and the world is not to
// be used any further.
[[nodiscard]] std::optional<std::string> apply(World& world, const Change& change);

// The key of an application's own element: "app:" and the process id. Keys of the elements in it
// begin with this and "/".
[[nodiscard]] std::string applicationElementKey(std::int32_t pid);

// What an element answers to one read. References hold keys.
struct Answer {
  platform::ReadingOf<Reference> reading;
  double delay = 0;  // seconds
};

// Everything that an element answers. Where the scenario says nothing: an empty title and
// description, no value, subrole or role description, enabled, not hidden, its children. An
// application besides: its windows, the focused one, and the switch for enhanced accessibility.
// Nothing else is defined.
[[nodiscard]] std::map<std::string, Answer> answersOf(const World& world, const std::string& key);

// The window server's list, in the order of the applications and of their windows.
[[nodiscard]] std::optional<std::vector<platform::OnScreenWindow>> screenOf(const World& world);

// The application in front; null when there is none.
[[nodiscard]] const WorldApplication* frontOf(const World& world);

}  // namespace callmonitor::scenario
