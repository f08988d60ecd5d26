// A desktop made of data, in virtual time: the second implementation of the seam. Tests describe a
// desktop, let the real code run on it, and look at what it asked.
//
// The clock moves only when a reading costs time, when a timer fires, or when a test ticks it.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/platform.h"

namespace callmonitor::scripted {

// What one attribute of one element answers, and how long (virtual seconds) the answer takes. No
// answer takes longer than the messaging time-out of its application: past that it is
// `cannotComplete`.
struct Answer {
  platform::Reading reading;
  double delay = 0;
};

// An element: its attributes by name. One that is not listed answers `attributeUnsupported`.
using Attributes = std::map<std::string, Answer, std::less<>>;

struct Timer {
  double due = 0;  // uptime seconds
  std::function<void()> action;
};

struct Desktop {
  bool trusted = true;
  double uptime = 1000;         // seconds since boot
  double wallClock = 1.75e9;    // seconds since 1970; moves with the uptime
  double messageTimeout = 0.2;  // seconds, as the last `applicationElement` call set it

  std::vector<platform::Application> applications;
  std::optional<std::int32_t> front;                        // process id
  std::map<std::string, Attributes, std::less<>> elements;  // by key; gone when not listed
  std::optional<std::vector<platform::OnScreenWindow>> windows;
  std::optional<std::vector<platform::AudioProcess>> audio;
  std::int32_t setAttributeCode = platform::code::success;

  // Seconds that every read of an application's elements takes where its answer names no delay of
  // its own, by `applicationKey`: of that element, and of those whose keys go on from it with "/".
  std::map<std::string, double, std::less<>> delays;
  // A read that nobody wrote down ends the process with a message instead of
  // `attributeUnsupported`.
  bool strict = false;

  // Every call made on the seam, in order: "read web1 AXRole", "frontmost", ... Long runs do
  // without.
  std::vector<std::string> calls;
  bool recordCalls = true;
  std::vector<Timer> timers;
  // The run loop returns when no timer is due before this uptime.
  double runUntil = 0;
  // Called with each entry of `calls` as it is made and before it is answered, so that a desktop
  // can change in the middle of a cycle.
  std::function<void(const std::string&)> onCall;
  // Called before a call is recorded and answered once the uptime has reached `nextChange`; changes
  // the desktop and sets `nextChange` anew.
  double nextChange = std::numeric_limits<double>::infinity();
  std::function<void()> change;
  // Called with the seconds by which the clock moves, for whoever wants to wait for them.
  std::function<void(double)> pace;
  std::uint64_t identifiersMade = 0;
};

// The desktop that the seam's functions act on. Reads are answered as their elements stand when the
// read begins. An element that is not listed answers `invalidElement`; where the key says that it
// belongs to an application that does not run any more, there is nobody to answer, and it is
// `cannotComplete`.
[[nodiscard]] Desktop& desktop();

// Starts over with an empty desktop.
void reset();

// The handle of the element with this key. Two handles of one key are equal.
[[nodiscard]] platform::Element element(const std::string& key);

// The key under which `applicationElement(pid, ...)` is looked up: "app:" and the process id.
[[nodiscard]] std::string applicationKey(std::int32_t pid);

// Answers, for writing a desktop down.
[[nodiscard]] Answer textAnswer(std::string text);
[[nodiscard]] Answer addressAnswer(std::string address);
[[nodiscard]] Answer flagAnswer(bool flag);
[[nodiscard]] Answer elementAnswer(const std::string& key);
[[nodiscard]] Answer elementsAnswer(const std::vector<std::string>& keys);
[[nodiscard]] Answer codeAnswer(std::int32_t code);

}  // namespace callmonitor::scripted
