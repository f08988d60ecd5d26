// Samples and surfaces for the tracker, written down shortly.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tracking/call_records.h"
#include "tracking/tracker.h"

namespace callmonitor::support {

inline constexpr ClientAudio silence{false, false};
inline constexpr ClientAudio speaking{true, true};

inline const Conference meetMeeting{"meet", "meet:abc-defg-hij"};

// A page in window "window" of element "element" that shows a meeting.
inline Surface meetSurface(CallState state = CallState::joined,
                           const std::string& element = "element",
                           const std::string& window = "window") {
  return {window, element, meetMeeting, state, "Standup", false};
}

// A native Zoom window.
inline Surface zoomSurface(CallState state = CallState::joined,
                           const std::string& window = "window") {
  return {window, window, {"zoom", ""}, state, "Zoom Meeting", false};
}

// A sample that was read completely: its windows are those of its surfaces. Audio is absent.
inline AppSample nativeSample(const std::vector<Surface>& surfaces = {}, std::int32_t pid = 42) {
  AppSample sample;
  sample.pid = pid;
  sample.launchedAt = 1.0;
  sample.viewInventoryComplete = true;
  sample.windows.emplace();
  for (const Surface& surface : surfaces) sample.windows->insert(surface.window);
  sample.surfaces = surfaces;
  return sample;
}

inline AppSample browserSample(const std::vector<Surface>& surfaces = {}, std::int32_t pid = 7) {
  AppSample sample = nativeSample(surfaces, pid);
  sample.browser = true;
  return sample;
}

// A native client that was alive but not read.
inline AppSample unread(AppSample sample) {
  sample.windows.reset();
  sample.viewInventoryComplete = false;
  sample.surfaces.clear();
  return sample;
}

// What a tick said, each call's state with its sequence: "joined 1".
inline std::vector<std::string> told(const std::vector<Observation>& observations) {
  std::vector<std::string> words;
  words.reserve(observations.size());
  for (const Observation& observation : observations) {
    words.push_back(std::string(stateWord(observation.state)) + " " +
                    std::to_string(observation.call.sequence));
  }
  return words;
}

using Told = std::vector<std::string>;

}  // namespace callmonitor::support
