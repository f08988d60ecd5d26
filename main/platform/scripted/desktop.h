// A desktop made of data, in virtual time: the second implementation of the seam. Tests describe a
// desktop, let the real code run on it, and look at what it asked.
//
// The clock moves only when a reading costs time, when a timer fires, or when a test ticks it.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
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

  // Every call made on the seam, in order: "read web1 AXRole", "frontmost", ...
  std::vector<std::string> calls;
  std::vector<Timer> timers;
  // The run loop returns when no timer is due before this uptime.
  double runUntil = 0;
  // Called with each entry of `calls` as it is made and before it is answered, so that a desktop
  // can change in the middle of a cycle.
  std::function<void(const std::string&)> onCall;
  std::uint64_t identifiersMade = 0;
};

// The desktop that the seam's functions act on.
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
