// The values that the tracker works on: what one tick saw of each application, the calls that go
// on, and what it says of them.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "evidence/evidence.h"
#include "identity/conference.h"
#include "identity/process_audio.h"

namespace callmonitor {

// One meeting surface, found in an application: a page or a native window.
struct Surface {
  std::string window;     // identifier of the window that shows it
  std::string element;    // identifier of the page, or again of the window
  Conference conference;  // the key is empty where a native client shows no identity
  CallState state = CallState::unknown;
  std::string title;
  bool mediaActive = false;
};

// One running application as sampled in one tick.
struct AppSample {
  std::int32_t pid = 0;
  double launchedAt = 0;    // seconds since 1970; 0 when unknown
  bool browser = false;     // a browser or one of its web apps
  bool standalone = false;  // a browser's web app
  std::optional<std::string> applicationBundleID;
  std::optional<ClientAudio> audio;   // absent: not known, which is not silence
  std::set<std::string> closedViews;  // elements of tracked calls that are gone for certain
  // Every view of the application was enumerated: no budget or deadline cut the search short.
  bool viewInventoryComplete = false;
  std::optional<std::set<std::string>> windows;  // absent: not read in this tick
  std::set<std::string> closedWindows;           // windows of tracked calls that are gone
  std::vector<Surface> surfaces;                 // in scan order
};

// One meeting in progress.
struct Call {
  std::string id;  // session identifier, a random UUID text; never changes
  std::int32_t pid = 0;
  double launchedAt = 0;  // with `pid`, the process: another launch is another process
  bool browser = false;
  Conference conference;
  std::string window;
  std::string element;
  std::int64_t sequence = 0;  // number of the last observation
  std::int64_t missing = 0;   // consecutive ticks whose absence counted
  bool heardClientAudio = false;
  std::optional<std::string> applicationBundleID;
  std::string title;         // last seen
  bool mediaActive = false;  // last seen
};

// One thing said of a call: the call as it stands after the change, and its state.
struct Observation {
  Call call;
  CallState state = CallState::unknown;
};

}  // namespace callmonitor
