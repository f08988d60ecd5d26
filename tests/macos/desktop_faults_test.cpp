// What goes wrong with trust, window list and workspace changes what is told as it should,
// ends nothing, leaves nothing behind, and is over when it is over.
#include <CoreGraphics/CoreGraphics.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "macos/fault_effects.h"
#include "macos/faulty_answers.h"

namespace callmonitor::macos {
namespace {

using platform::Application;

struct DesktopFaults : FaultEffects {};

TEST_F(DesktopFaults, TrustThatGoesLeavesCallsUnknown) {
  expectEffect(
      meetCall, {joined}, "not trusted", [] { desktop().world.trusted = false; },
      [] { desktop().world.trusted = true; }, {unknown, "untrusted", {}, false});
}

// Without trust every read would answer that accessibility is disabled; none is sent.
TEST_F(DesktopFaults, WithoutTrustNobodyIsAsked) {
  expectEffect(
      meetCall, {joined}, "not trusted, and all reads disabled",
      [] {
        desktop().world.trusted = false;
        desktop().attributeFaults[{"", ""}].code = kAXErrorAPIDisabled;
        desktop().recordMessages = true;
      },
      [] {
        EXPECT_EQ(desktop().messages, std::vector<std::string>());
        desktop().world.trusted = true;
        desktop().attributeFaults.clear();
      },
      {unknown, "untrusted", {}, false});
}

// The list's entries.

using Fields = std::vector<std::pair<CFStringRef, Object*>>;

Object* entry(const Fields& fields) {
  standins::Dictionary dictionary;
  for (const auto& [key, value] : fields) {
    standins::keep(value);
    dictionary.entries[standins::usedAs<standins::Text>(key).units] = value;
  }
  return standins::made(std::move(dictionary));
}

// The call's window with one field changed; null takes it away.
Object* changed(CFStringRef field, Object* value) {
  Fields fields;
  for (const auto& [key, usual] : Fields{{kCGWindowOwnerPID, standins::madeNumber(101)},
                                         {kCGWindowName, standins::madeText("Standup")},
                                         {kCGWindowLayer, standins::madeNumber(0)},
                                         {kCGWindowNumber, standins::madeNumber(1)}}) {
    if (key != field) {
      fields.emplace_back(key, usual);
      continue;
    }
    // Nobody has a reference to what is left out.
    standins::keep(usual);
    standins::drop(usual);
    if (value != nullptr) fields.emplace_back(key, value);
  }
  return entry(fields);
}

Object* listOf(const std::vector<Object*>& entries) {
  return standins::madeList(entries);
}

TEST_F(DesktopFaults, AWindowListThatIsNotWhatItShouldBeCostsTheNumberOnly) {
  using standins::flagObject;
  using standins::madeFraction;
  using standins::madeNumber;
  using standins::madeText;
  struct Row {
    const char* sentence;
    std::function<Object*()> list;
    const char* calls;
  };
  const auto usual = [] { return changed(nullptr, nullptr); };
  for (const Row& row : std::vector<Row>{
           {"the usual entry", [&] { return listOf({usual()}); }, joined},
           {"no list", [] { return nullptr; }, joinedNowhere},
           {"an empty list", [] { return listOf({}); }, joinedNowhere},
           {"a list of numbers", [] { return listOf({madeNumber(1)}); }, joinedNowhere},
           {"a list with a text besides",
            [&] {
              return listOf({usual(), madeText("x")});
            },
            joinedNowhere},
           {"a list with a hole",
            [&] {
              return listOf({usual(), nullptr});
            },
            joinedNowhere},
           {"an entry of nothing besides",
            [&] {
              return listOf({usual(), entry({})});
            },
            joined},
           {"two windows of the title",
            [&] {
              return listOf({usual(), usual()});
            },
            joinedNowhere},
           {"no owner", [] { return listOf({changed(kCGWindowOwnerPID, nullptr)}); },
            joinedNowhere},
           {"an owner in words",
            [] { return listOf({changed(kCGWindowOwnerPID, madeText("101"))}); }, joinedNowhere},
           {"an owner that no process id can be",
            [] { return listOf({changed(kCGWindowOwnerPID, madeNumber((1LL << 32) + 101))}); },
            joinedNowhere},
           {"an owner below what a process id can be",
            [] { return listOf({changed(kCGWindowOwnerPID, madeNumber(-(1LL << 32) + 101))}); },
            joinedNowhere},
           {"an owner with a fraction",
            [] { return listOf({changed(kCGWindowOwnerPID, madeFraction(101.5))}); },
            joinedNowhere},
           {"an owner as a floating number",
            [] { return listOf({changed(kCGWindowOwnerPID, madeFraction(101))}); }, joined},
           {"no name", [] { return listOf({changed(kCGWindowName, nullptr)}); }, joinedNowhere},
           {"a number for a name", [] { return listOf({changed(kCGWindowName, madeNumber(1))}); },
            joinedNowhere},
           {"no layer", [] { return listOf({changed(kCGWindowLayer, nullptr)}); }, joinedNowhere},
           {"another layer", [] { return listOf({changed(kCGWindowLayer, madeNumber(3))}); },
            joinedNowhere},
           {"a Boolean for a layer",
            [] { return listOf({changed(kCGWindowLayer, flagObject(false))}); }, joinedNowhere},
           {"no number", [] { return listOf({changed(kCGWindowNumber, nullptr)}); }, joinedNowhere},
           {"a number in words", [] { return listOf({changed(kCGWindowNumber, madeText("1"))}); },
            joinedNowhere},
           {"a list for a number", [] { return listOf({changed(kCGWindowNumber, listOf({}))}); },
            joinedNowhere},
       }) {
    expectEffect(
        meetCall, {joined}, row.sentence, [&] { desktop().windowList = row.list; },
        [] { desktop().windowList = {}; }, {row.calls});
  }
}

TEST_F(DesktopFaults, AWorkspaceThatDoesNotKnow) {
  struct Row {
    const char* sentence;
    std::function<void()> begin;
    std::string meanwhile;  // in the first cycle
    const char* stage;
  };
  const auto chrome = []() -> Application& { return desktop().applications.front(); };
  for (const Row& row : std::vector<Row>{
           {"nobody is in front", [] { desktop().front.reset(); }, joined, "no-front-provider"},
           {"the application in front has no process", [] { desktop().front->pid = -1; }, joined,
            "no-front-provider"},
           {"the application in front has no bundle identifier",
            [] { desktop().front->bundleIdentifier.reset(); }, joined, "no-front-provider"},
           {"no application is found by its process id", [] { desktop().lookupFails = true; },
            joinedNowhere, "complete"},
           {"another application without a process",
            [&] {
              Application other = chrome();
              other.pid = -1;
              desktop().applications.insert(desktop().applications.begin(), 2, other);
            },
            joined, "complete"},
           {"the same process twice", [&] { desktop().applications.push_back(chrome()); }, joined,
            "complete"},
           {"no bundle identifier", [&] { chrome().bundleIdentifier.reset(); }, unknown,
            "complete"},
       }) {
    expectEffect(meetCall, {joined}, row.sentence, row.begin,
                 [] {
                   desktop().lookupFails = false;
                   standins::refreshWorkspace();
                 },
                 {row.meanwhile, row.stage});
  }
}

TEST_F(DesktopFaults, AnElementThatCannotBeMadeLeavesItsCallUnknown) {
  expectEffect(
      meetCall, {joined}, "no element", [] { desktop().elementsFail = true; },
      [] { desktop().elementsFail = false; }, {unknown, "no-focused-window"});
}

TEST_F(DesktopFaults, ATimeOutThatCannotBeSetChangesNothingWhileAnswersCome) {
  for (const std::int32_t code : failing) {
    expectEffect(
        meetCall, {joined}, std::to_string(code), [&] { desktop().timeoutCode = code; },
        [] { desktop().timeoutCode.reset(); }, {joined});
  }
}

// The list of applications is part of the look at them, which has 1.2 s; trust and sound are asked
// before it begins, the rest after it has ended.
TEST_F(DesktopFaults, ACallWithoutTimeOutThatIsSlowIsWaitedFor) {
  struct Row {
    const char* function;
    const char* calls;
  };
  for (const Row& row : std::vector<Row>{
           {"AXIsProcessTrusted", joined},
           {"AudioObjectGetPropertyDataSize", joined},
           {"AudioObjectGetPropertyData", joined},
           {"runningApplications", unknown},
           {"frontmostApplication", unknown},
           {"runningApplicationWithProcessIdentifier:", joined},
           {"CGWindowListCopyWindowInfo", joined},
       }) {
    expectEffect(
        meetCall, {joined}, row.function, [&] { desktop().delays[row.function] = 2; },
        [] { desktop().delays.clear(); }, {row.calls});
  }
}

TEST_F(DesktopFaults, AnApplicationThatIsNotListedHasQuit) {
  play(meetCall);
  expectCycle({joined}, "before");
  desktop().applications.clear();
  expectCycle({"left \"Standup\""}, "meanwhile");
  expectCycle({""}, "meanwhile");
  standins::refreshWorkspace();
  expectCycle({joined}, "as a new call");
}

TEST_F(DesktopFaults, ALaunchTimeThatIsNotKnownAnyMoreIsAnotherLaunch) {
  play(meetCall);
  expectCycle({joined}, "before");
  desktop().applications.front().launchedAt.reset();
  // Without a launch time no window can be the call's for certain.
  expectCycle({"left \"Standup\", joined media \"Standup\""}, "meanwhile");
  expectCycle({joinedNowhere}, "meanwhile");
}

TEST_F(DesktopFaults, AnotherLaunchTimeIsAnotherLaunch) {
  play(meetCall);
  expectCycle({joined}, "before");
  *desktop().applications.front().launchedAt += 0.001;
  expectCycle({"left \"Standup\", joined media \"Standup\" window=1"}, "meanwhile");
  expectCycle({joined}, "as a new call");
}

// The application that is looked up by its process id may be a later one than that of the list.
TEST_F(DesktopFaults, WhoIsLookedUpHasToBeTheLaunchThatWasListed) {
  struct Row {
    const char* sentence;
    std::function<void(Application&)> change;
    const char* calls;
    std::string bundle;  // of the record; empty for none
  };
  for (const Row& row : std::vector<Row>{
           {"the same", [](Application&) {}, joined, "com.google.Chrome"},
           {"another launch", [](Application& one) { *one.launchedAt += 0.001; }, joinedNowhere,
            ""},
           {"another launch of another application",
            [](Application& one) {
              *one.launchedAt += 0.001;
              one.bundleIdentifier = "org.example.Other";
            },
            joinedNowhere, ""},
           {"a launch that is not known", [](Application& one) { one.launchedAt.reset(); },
            joinedNowhere, ""},
           {"another bundle identifier",
            [](Application& one) { one.bundleIdentifier = "org.example.Other"; }, joined,
            "org.example.Other"},
           {"no bundle identifier", [](Application& one) { one.bundleIdentifier.reset(); }, joined,
            ""},
       }) {
    SCOPED_TRACE(row.sentence);
    play(meetCall);
    desktop().lookup = desktop().applications.front();
    row.change(*desktop().lookup);
    for (int i = 0; i < 2; ++i) {
      const std::vector<Json> records = cycle();
      EXPECT_EQ(calls(records), row.calls);
      for (const Json& record : support::ofKind(records, "observation")) {
        EXPECT_EQ(record.value("applicationBundleId", ""), row.bundle);
      }
    }
    desktop().lookup.reset();
    expectCycle({joined}, "afterwards");
  }
}

}  // namespace
}  // namespace callmonitor::macos
