// Writes scripted desktops down the way one would draw them: applications, their windows, and what
// stands in those.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/scripted/desktop.h"

namespace callmonitor::support {

using scripted::desktop;

inline constexpr const char* meetAddress = "https://meet.google.com/abc-defg-hij";
inline constexpr const char* meetKey = "meet:abc-defg-hij";
inline constexpr const char* webApp = "com.google.Chrome.app.kjgfgldnnfoeklkmfkjfagphfepbbdan";

// One element with everything below it. A node without a key gets one from its parent's key and
// its place there: the second child of "page" is "page.1".
struct Node {
  std::string key;
  scripted::Attributes attributes;
  std::vector<Node> children;
};

inline Node node(std::string key, const std::string& role, std::vector<Node> children = {}) {
  return {std::move(key), {{"AXRole", scripted::textAnswer(role)}}, std::move(children)};
}

inline Node with(Node changed, const std::string& attribute, scripted::Answer answer) {
  changed.attributes.insert_or_assign(attribute, std::move(answer));
  return changed;
}

inline Node titled(Node changed, const std::string& title) {
  return with(std::move(changed), "AXTitle", scripted::textAnswer(title));
}

inline Node button(const std::string& title) {
  return titled(node("", "AXButton"), title);
}

inline Node heading(const std::string& text) {
  return titled(node("", "AXHeading"), text);
}

inline Node group(std::vector<Node> children) {
  return node("", "AXGroup", std::move(children));
}

inline Node window(const std::string& key, const std::string& title,
                   std::vector<Node> children = {}) {
  return titled(node(key, "AXWindow", std::move(children)), title);
}

inline Node page(const std::string& key, const std::string& address,
                 std::vector<Node> children = {}) {
  return with(node(key, "AXWebArea", std::move(children)), "AXURL",
              scripted::addressAnswer(address));
}

// What a client offers in a call, with microphone and camera on or off.
inline std::vector<Node> callControls(bool mediaOn = false) {
  const std::string turn = mediaOn ? "Turn off " : "Turn on ";
  return {button("Leave call"), button(turn + "microphone"), button(turn + "camera")};
}

// What a page shows before it is joined.
inline std::vector<Node> lobbyControls() {
  return {button("Turn on microphone"), button("Turn on camera"), button("Join now")};
}

// What a page shows after the call.
inline std::vector<Node> leftNotice() {
  return {heading("You left the meeting")};
}

// Puts a node and everything below it on the desktop, in place of what stood under its keys.
inline void place(const Node& placed) {
  scripted::Attributes attributes = placed.attributes;
  std::vector<std::string> keys;
  for (std::size_t i = 0; i < placed.children.size(); ++i) {
    Node child = placed.children[i];
    if (child.key.empty()) child.key = placed.key + "." + std::to_string(i);
    keys.push_back(child.key);
    place(child);
  }
  if (!keys.empty()) attributes.insert_or_assign("AXChildren", scripted::elementsAnswer(keys));
  desktop().elements.insert_or_assign(placed.key, attributes);
}

// Makes an element go for certain: it answers that it no longer exists.
inline void close(const std::string& key) {
  desktop().elements.erase(key);
}

// Sets what an application answers for its windows, and puts them on the desktop.
inline void showWindows(std::int32_t pid, const std::vector<Node>& windows) {
  std::vector<std::string> keys;
  for (const Node& shown : windows) {
    place(shown);
    keys.push_back(shown.key);
  }
  desktop().elements[scripted::applicationKey(pid)].insert_or_assign(
      "AXWindows", scripted::elementsAnswer(keys));
}

// Starts a regular application that was launched at 1.0 and shows these windows.
inline void start(std::int32_t pid, const std::string& bundle,
                  const std::vector<Node>& windows = {}) {
  desktop().applications.push_back({pid, 1.0, bundle, true});
  showWindows(pid, windows);
}

inline void quit(std::int32_t pid) {
  std::erase_if(desktop().applications,
                [&](const platform::Application& running) { return running.pid == pid; });
  close(scripted::applicationKey(pid));
}

// Ends a process and starts another launch under its identifier.
inline void relaunch(std::int32_t pid, double launchedAt) {
  for (platform::Application& running : desktop().applications) {
    if (running.pid == pid) running.launchedAt = launchedAt;
  }
}

// Runs `action` at every call on the seam with this name ("read page AXURL"), before its answer.
inline void when(const std::string& call, const std::function<void()>& action) {
  const auto before = desktop().onCall;
  desktop().onCall = [call, action, before](const std::string& made) {
    if (before) before(made);
    if (made == call) action();
  };
}

// Lets the clock stand at `uptime` from this call on.
inline void clockAt(const std::string& call, double uptime) {
  when(call, [uptime] { desktop().uptime = uptime; });
}

// How often a call was made, and at which place first; a call that was never made is at the end.
inline std::size_t timesCalled(const std::string& call) {
  std::size_t times = 0;
  for (const std::string& made : desktop().calls) times += made == call ? 1 : 0;
  return times;
}
inline std::size_t placeOf(const std::string& call) {
  std::size_t place = 0;
  while (place < desktop().calls.size() && desktop().calls[place] != call) ++place;
  return place;
}

// What follows `start` in each call that begins so: "scan " gives the roots in scanning order.
inline std::vector<std::string> callsAfter(const std::string& start) {
  std::vector<std::string> rest;
  for (const std::string& made : desktop().calls) {
    if (made.starts_with(start)) rest.push_back(made.substr(start.size()));
  }
  return rest;
}

}  // namespace callmonitor::support
