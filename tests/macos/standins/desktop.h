// The desktop behind the stand-ins of the system frameworks: a scenario's world on a clock of its
// own, and what goes wrong in the frameworks besides.
//
// The clock moves only when a message costs time and when a timer fires.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "macos/standins/objects.h"
#include "platform/platform.h"
#include "platform/scenario/scenario.h"
#include "platform/scenario/schedule.h"
#include "platform/scenario/world.h"

namespace callmonitor::standins {

// What one attribute answers instead of what the world says; what is absent stays as it is there.
struct AttributeFault {
  std::optional<std::int32_t> code;
  // Makes the value afresh for each message, beside whatever code; null for NULL.
  std::function<Object*()> value;
  std::optional<double> delay;  // seconds
};

// What the audio objects answer instead of what the world says. Those of processes are of every
// process, or of the one at a place in the list.
struct AudioFaults {
  std::optional<OSStatus> sizeStatus;
  std::optional<UInt32> size;
  std::optional<OSStatus> listStatus;
  std::optional<UInt32> listReturned;
  std::optional<std::size_t> onlyProcess;
  std::optional<OSStatus> bundleStatus;
  // Makes the bundle identifier afresh, beside whatever status; null for NULL.
  std::function<Object*()> bundle;
  std::optional<UInt32> bundleReturned;
  std::optional<OSStatus> inputStatus;
  std::optional<UInt32> inputReturned;
  std::optional<UInt32> inputValue;
  std::optional<OSStatus> outputStatus;
  std::optional<UInt32> outputReturned;
  std::optional<UInt32> outputValue;
};

struct Desktop {
  double uptime = scenario::startUptime;
  double runUntil = scenario::startUptime;  // the run loop returns when no timer is due before

  scenario::Scenario scenario;
  scenario::World world;
  scenario::Schedule schedule;
  // What each element answers, by key and attribute.
  std::map<std::string, std::map<std::string, scenario::Answer>> answers;

  // The workspace as the run loop last saw it.
  std::vector<platform::Application> applications;
  std::optional<platform::Application> front;
  bool lookupFails = false;  // no application is found by its process id
  // What an application is that is looked up by its process id, where the list says another thing.
  std::optional<platform::Application> lookup;
  // What every application answers; else those that are not regular are accessories.
  std::optional<long> activationPolicy;

  long majorVersion = 14;
  long minorVersion = 2;

  // By element and attribute; the empty text stands for every one.
  std::map<std::pair<std::string, std::string>, AttributeFault> attributeFaults;
  // What the setting of any attribute answers, and how long that takes (seconds).
  std::optional<std::int32_t> setCode;
  std::optional<double> setDelay;
  // Whether elements of applications can be made, and what setting a time-out answers; one that
  // fails is not set.
  bool elementsFail = false;
  std::optional<std::int32_t> timeoutCode;
  AudioFaults audioFaults;
  // Makes the window server's list afresh; null for NULL.
  std::function<Object*()> windowList;

  // Seconds that calls of a function take, by its name; of those that know no time-out.
  std::map<std::string, double, std::less<>> delays;
  bool timersFail = false;           // no timer can be made
  bool identifiersFail = false;      // nor an identifier
  bool identifierTextsFail = false;  // nor the text of one

  // Every accessibility message: "copy app:101/w AXRole", "set app:101 AXEnhancedUserInterface".
  std::vector<std::string> messages;
  bool recordMessages = false;
  // Messages on references that no time-out was set for.
  long messagesWithoutTimeout = 0;

  std::vector<Object*> timers;  // kept
  // Whether the run loop has told the workspace of what happened since the last timer.
  bool workspaceNoticed = false;
  // Whether it has nothing to tell, so that no source ends a run of the loop.
  bool workspaceQuiet = false;
  int stops = 0;  // runs of the run loop that somebody else stops at once
  // Called after each timer's callout.
  std::function<void()> afterTimer;
  std::uint64_t identifiersMade = 0;
};

[[nodiscard]] Desktop& desktop();

// Starts over with an empty desktop and an empty run loop.
void reset();

// Starts a fresh desktop as the scenario opens. Its steps happen as time passes, also in the middle
// of a cycle: before the first call of a framework at or after their time.
void play(const scenario::Scenario& scenario);

// Every call of a framework that asks about the desktop begins here.
void arrive(std::string_view function);
// Lets time pass.
void advance(double seconds);
// The workspace notices what came and went, which it does only while the run loop runs.
void refreshWorkspace();

// The value of an answer as an object; null for no value.
[[nodiscard]] Object* objectOf(const scenario::Value& value);

}  // namespace callmonitor::standins
