// Looks at the pages of one application, whose process id is the argument, and prints one JSON
// object for each command on standard input:
//
//   pages     walks every page one read at a time and then ahead of the walk: both evidences, the
//             messages of the second walk, and each element's parent
//   wander    a walk that does what no walk is expected to: against the same, one read at a time
//   search    the messages of one search for pages
//   scan      one cycle that scans the first page found by an earlier command, in the program's way
//   scan N    the same; the application is stopped (SIGSTOP) when the Nth message is sent
//   kill N    the same; the application is killed (SIGKILL) when the Nth message is sent
#include <dirent.h>
#include <signal.h>

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "page_scans.h"
#include "platform/linux/desktop.h"

namespace callmonitor {
namespace {

using Json = nlohmann::json;
using platform::ObjectName;

Json toJson(const Evidence& evidence) {
  return {{"controls", evidence.controls},
          {"notices", evidence.notices},
          {"nativeZoomTile", evidence.nativeZoomTile},
          {"complete", evidence.complete},
          {"nodes", evidence.nodes},
          {"failedNodes", evidence.failedNodes},
          {"failedAttributes", evidence.failedAttributes},
          {"failedControlHints", evidence.failedControlHints},
          {"truncated", evidence.truncated},
          {"deadline", evidence.deadline}};
}

// Runs `action` in a cycle of its own and gives the messages that were sent meanwhile.
Json messagesOf(const std::function<void()>& action) {
  Json messages = Json::array();
  platform::desktop().bus.observer = [&](const ObjectName& object, std::string_view member) {
    messages.push_back({object.path, member});
  };
  platform::inCycle(action);
  platform::desktop().bus.observer = nullptr;
  return messages;
}

Json bothScans(const Element& page) {
  Json parents = Json::object();
  Json taken = Json::array();
  Json takenAhead = Json::array();
  // Outside a cycle nothing is remembered and nothing fetched ahead.
  const Evidence single = scanPage(page, withoutHurry, platform::readAttribute,
                                   [&](const Element& element, const AXSnapshot<Element>& read) {
                                     taken.push_back(pathOf(element));
                                     for (const Element& child : read.children)
                                       parents[pathOf(child)] = pathOf(element);
                                   });
  Evidence ahead;
  Json messages = messagesOf([&] {
    platform::expectScan(page, platform::systemUptime() + withoutHurry, labelScanBudget);
    ahead = scanPage(page, withoutHurry, platform::readAttribute,
                     [&](const Element& element, const AXSnapshot<Element>&) {
                       takenAhead.push_back(pathOf(element));
                     });
  });
  return {{"root", pathOf(page)},           {"single", toJson(single)},
          {"ahead", toJson(ahead)},         {"taken", std::move(taken)},
          {"takenAhead", takenAhead},       {"parents", std::move(parents)},
          {"messages", std::move(messages)}};
}

std::string told(const platform::Reading& reading) {
  std::string words = std::to_string(reading.code);
  if (const auto* text = std::get_if<std::string>(&reading.value)) words += " " + *text;
  if (const auto* flag = std::get_if<bool>(&reading.value)) words += *flag ? " true" : " false";
  if (const auto* nodes = std::get_if<std::vector<Element>>(&reading.value)) {
    for (const Element& node : *nodes) words += " " + pathOf(node);
  }
  return words;
}

// Skips every third element, leaves subtrees out, reads attributes again, goes back to the root,
// and stops before the end.
std::vector<std::string> wander(const Element& page) {
  std::vector<std::string> answers;
  const auto read = [&](const Element& element, std::string_view name) {
    platform::Reading reading = platform::readAttribute(element, name);
    answers.push_back(pathOf(element) + " " + std::string(name) + " " + told(reading));
    return reading;
  };
  std::vector<Element> stack{page};
  for (int taken = 0; !stack.empty() && taken < 300; ++taken) {
    const Element element = stack.back();
    stack.pop_back();
    if (taken % 3 == 2) continue;
    for (const std::string_view name :
         {attributes::role, attributes::subrole, attributes::title, attributes::hidden}) {
      (void)read(element, name);
    }
    if (taken % 7 == 3) (void)read(element, attributes::role);
    if (taken == 150) (void)read(page, attributes::title);
    if (taken % 5 == 4) continue;
    for (const Element& child : elementsIn(read(element, attributes::children))) {
      stack.push_back(child);
    }
  }
  return answers;
}

Json wandered(const Element& page) {
  const std::vector<std::string> single = wander(page);
  std::vector<std::string> ahead;
  Json messages = messagesOf([&] {
    platform::expectScan(page, platform::systemUptime() + withoutHurry, labelScanBudget);
    ahead = wander(page);
  });
  return {{"single", single}, {"ahead", ahead}, {"messages", std::move(messages)}};
}

int openDescriptors() {
  int count = 0;
  DIR* directory = opendir("/proc/self/fd");
  if (directory == nullptr) return -1;
  while (readdir(directory) != nullptr) ++count;
  closedir(directory);
  return count;
}

Json oneScan(const Element& page, std::int32_t pid, int at, int signal) {
  int sent = 0;
  Json members = Json::array();
  platform::desktop().bus.observer = [&](const ObjectName&, std::string_view member) {
    members.push_back(member);
    if (++sent == at) kill(pid, signal);
  };
  Evidence evidence;
  const double begun = platform::systemUptime();
  platform::inCycle([&] {
    evidence = labels(page, true, false, false, platform::systemUptime() + labelScanSeconds);
  });
  const double seconds = platform::systemUptime() - begun;
  platform::desktop().bus.observer = nullptr;
  return {{"evidence", toJson(evidence)},
          {"seconds", seconds},
          {"members", std::move(members)},
          {"descriptors", openDescriptors()}};
}

struct Looker {
  std::int32_t pid = 0;
  std::vector<Element> pages;

  void find() {
    platform::inCycle([this] {
      (void)platform::runningApplications();
      pages = pagesOf(pid);
    });
  }
  Json answer(const std::string& command, int number) {
    // As in each cycle of the program: a connection that was lost is made again.
    (void)platform::accessibilityTrusted();
    if (!pages.empty() && command == "scan") return oneScan(pages.front(), pid, number, SIGSTOP);
    if (!pages.empty() && command == "kill") return oneScan(pages.front(), pid, number, SIGKILL);
    find();
    if (command == "search") return {{"messages", messagesOf([this] { (void)pagesOf(pid); })}};
    if (pages.empty()) return {{"error", "no page"}};
    if (command == "wander") return wandered(pages.front());
    Json all = Json::array();
    for (const Element& page : pages) all.push_back(bothScans(page));
    return {{"pages", std::move(all)}};
  }
};

}  // namespace
}  // namespace callmonitor

int main(int count, char** arguments) {
  if (count != 2) return 64;
  callmonitor::Looker looker{std::atoi(arguments[1]), {}};
  if (!callmonitor::platform::accessibilityTrusted()) return 1;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string command;
    int number = 0;
    words >> command >> number;
    std::cout << looker.answer(command, number).dump() << std::endl;
  }
  return 0;
}
