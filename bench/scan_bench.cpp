// How long one scan of a real page takes, read in different ways in turn: by one message for every
// attribute, one at a time over the bus; by one message at a time with what is remembered of the
// element being read; and as the program reads, which is also held against its own deadline.
// `large_page.py` brings up the desktop and the page.
//
// The arguments are the browser's process id and the number of elements that the page must have.
// The status is 0 when every scan saw exactly the whole page and found the same, the program's
// within its deadline, and the program took no more than a quarter of the first way's time.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "page_scans.h"
#include "platform/linux/accessible_object.h"
#include "platform/linux/desktop.h"
#include "platform/linux/role_map.h"

namespace callmonitor {
namespace {

using platform::AccessibilityBus;
using platform::BusReply;
using platform::BusTarget;
using platform::Reading;
namespace code = platform::code;

constexpr int rounds = 10;
// What the program may take of the time that one message for every attribute takes.
constexpr double mostOfReference = 0.25;

std::string nameOf(AccessibilityBus& bus, const BusTarget& target, const char* property) {
  const BusReply reply = platform::call(bus, target, "org.freedesktop.DBus.Properties", "Get", "ss",
                                        "org.a11y.atspi.Accessible", property);
  const char* text = "";
  if (reply.code == code::success) {
    (void)sd_bus_message_read(reply.message.get(), "v", "s", &text);
  }
  return text;
}

Reading flagOf(AccessibilityBus& bus, const BusTarget& target, std::uint64_t bit, bool wanted) {
  const auto states = platform::readStates(bus, target);
  return {states.code, ((states.value & bit) != 0) == wanted};
}

Reading childrenOf(AccessibilityBus& bus, const BusTarget& target, const Element& parent) {
  const auto children = platform::readChildren(bus, target);
  std::vector<Element> elements;
  for (const platform::ObjectName& child : children.value) {
    platform::ElementReference reference = *parent.reference;
    reference.object = child;
    elements.push_back({std::make_shared<const platform::ElementReference>(reference)});
  }
  return {children.code, std::move(elements)};
}

// Exactly one message for each attribute, with no thought of what was asked before. It knows the
// roles of this page only, whose texts are in the elements' names.
Reading readPlainly(const Element& element, std::string_view name) {
  AccessibilityBus& bus = platform::desktop().bus;
  const BusTarget target{element.reference->object};
  if (name == attributes::role) {
    const auto role = platform::readRole(bus, target);
    platform::AccessibleFacts facts;
    facts.role = role.value;
    return {role.code, std::string(platform::macRole(facts))};
  }
  if (name == attributes::subrole) {
    const auto known = platform::readAttributes(bus, target);
    platform::AccessibleFacts facts;
    facts.webRoles = known.value.webRoles;
    return {known.code, std::string(platform::macSubrole(facts))};
  }
  if (name == attributes::hidden) return flagOf(bus, target, platform::state::visible, false);
  if (name == attributes::enabled) return flagOf(bus, target, platform::state::enabled, true);
  if (name == attributes::children) return childrenOf(bus, target, element);
  if (name == attributes::title) return {code::success, nameOf(bus, target, "Name")};
  // The page has no help texts and no input fields: these two are asked for and are not there.
  if (name == attributes::description) {
    (void)nameOf(bus, target, "Description");
    return {code::noValue, {}};
  }
  if (name == attributes::value) {
    (void)nameOf(bus, target, "Name");
    return {code::noValue, {}};
  }
  return {code::attributeUnsupported, {}};
}

struct Way {
  const char* name;
  Evidence (*scan)(const Element& page);
  std::vector<double> seconds{};
  std::size_t messages = 0;
  int inTime = 0;
  bool whole = true;
};

void nothing(const Element&, const AXSnapshot<Element>&) {}

Evidence scanPlainly(const Element& page) {
  return scanPage(page, withoutHurry, readPlainly, nothing);
}

Evidence scanRemembering(const Element& page) {
  return scanPage(page, withoutHurry, platform::readAttribute, nothing);
}

// With all the time it needs: a scan that its deadline cut short would seem to be a fast one.
Evidence scanAhead(const Element& page) {
  platform::expectScan(page, platform::systemUptime() + withoutHurry, labelScanBudget);
  return scanPage(page, withoutHurry, platform::readAttribute, nothing);
}

Evidence scanAsTheProgramDoes(const Element& page) {
  return labels(page, true, false, false, platform::systemUptime() + labelScanSeconds);
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t half = values.size() / 2;
  return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
}

Evidence run(Way& way, const Element& page) {
  Evidence evidence;
  way.messages = 0;
  platform::desktop().bus.observer = [&](const auto&, auto) { ++way.messages; };
  platform::inCycle([&] {
    const double begun = platform::systemUptime();
    evidence = way.scan(page);
    way.seconds.push_back(platform::systemUptime() - begun);
  });
  platform::desktop().bus.observer = nullptr;
  if (evidence.complete) ++way.inTime;
  for (const std::string& failure : evidence.failedAttributes) {
    if (!evidence.deadline) std::printf("%s: %s\n", way.name, failure.c_str());
  }
  return evidence;
}

bool seesWhole(const Evidence& evidence, int nodes) {
  return evidence.complete && evidence.nodes == nodes && evidence.failedNodes == 0 &&
         evidence.failedAttributes.empty();
}

double ratio(const Way& way, const Way& reference) {
  return median(way.seconds) / median(reference.seconds);
}

// Prints what a run is expected to be and is not; true when there is nothing to print.
bool expect(bool good, const char* complaint) {
  if (!good) std::printf("%s\n", complaint);
  return good;
}

int compare(const Element& page, int nodes) {
  std::vector<Way> ways{{"one message an attribute", scanPlainly},
                        {"one at a time, remembering", scanRemembering},
                        {"the program, unhurried", scanAhead},
                        {"the program, in its 0.5 s", scanAsTheProgramDoes}};
  const Way& reference = ways[0];
  const Way& unhurried = ways[2];
  const Way& inItsTime = ways[3];
  bool same = true;
  for (int round = 0; round < rounds; ++round) {
    const Evidence first = run(ways[0], page);
    ways[0].whole = ways[0].whole && seesWhole(first, nodes);
    for (std::size_t each = 1; each < ways.size(); ++each) {
      const Evidence evidence = run(ways[each], page);
      ways[each].whole = ways[each].whole && seesWhole(evidence, nodes);
      // One that was cut short is judged by its being so.
      if (evidence.complete && !sameEvidence(evidence, first)) same = false;
    }
  }
  for (const Way& way : ways) {
    std::printf("%-28s %6.1f ms  %6zu messages  ratio %.3f  complete %d of %d  longest %.1f ms\n",
                way.name, median(way.seconds) * 1e3, way.messages, ratio(way, reference),
                way.inTime, rounds,
                *std::max_element(way.seconds.begin(), way.seconds.end()) * 1e3);
  }
  std::printf("against remembering: ratio %.3f\n", ratio(unhurried, ways[1]));
  const bool whole =
      std::all_of(ways.begin(), ways.end(), [](const Way& way) { return way.whole; });
  const std::vector<bool> good{
      expect(whole, "not every scan saw exactly the whole page"),
      expect(same, "the scans did not find the same"),
      expect(inItsTime.inTime == rounds, "the program did not always keep its time"),
      // The median of scans that were cut short would say nothing.
      expect(ratio(unhurried, reference) <= mostOfReference, "the ratio is too high")};
  return std::find(good.begin(), good.end(), false) == good.end() ? 0 : 1;
}

}  // namespace
}  // namespace callmonitor

int main(int count, char** arguments) {
  if (count != 3 || !callmonitor::platform::accessibilityTrusted()) return 64;
  std::vector<callmonitor::Element> pages;
  callmonitor::platform::inCycle([&] {
    (void)callmonitor::platform::runningApplications();
    pages = callmonitor::pagesOf(std::atoi(arguments[1]));
  });
  if (pages.size() != 1) {
    std::printf("%zu pages\n", pages.size());
    return 1;
  }
  return callmonitor::compare(pages.front(), std::atoi(arguments[2]));
}
