// A call whose view or window is out of sight ends in silence only when the element itself answers
// that it no longer exists. Every other answer leaves the call unknown.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "macos/fault_effects.h"
#include "macos/faulty_answers.h"

namespace callmonitor::macos {
namespace {

// Each call is in sight for two cycles; then what showed it goes out of sight and still exists.
struct Situation {
  const char* sentence;
  std::string desktop;
  const char* title;
  const char* remembered;  // the element that can tell the end
  const char* before;      // of the call, in the first two cycles
  const char* stage;       // from then on
};

const std::vector<Situation>& situations() {
  static const std::vector<Situation> all{
      {"a tab in the background of a silent browser", meetWindow + R"(
front chrome
audio com.google.Chrome.helper in out
at 1500ms:
  detach p
  add w
    page news https://news.example.org/
  audio com.google.Chrome.helper
end 1h
)",
       "Standup", "app:101/p", joined, "no-provider-surface"},
      {"the last window of a silent browser", meetWindow + R"(
front chrome
audio com.google.Chrome.helper in out
at 1500ms:
  detach w
  audio com.google.Chrome.helper
end 1h
)",
       "Standup", "app:101/w", joined, "no-focused-window"},
      {"the window of a silent native client", R"(
app zoom us.zoom.xos
  window w "Zoom Meeting"
    button "Leave"
    button "Mute"
  window home "Zoom Workplace"
front zoom
audio zoom in out
at 1500ms:
  detach w
  audio zoom
end 1h
)",
       "Zoom Meeting", "app:101/w", "joined \"Zoom Meeting\" window=1", "complete"},
  };
  return all;
}

struct ClosedViews : FaultEffects {
  static std::string callIs(const char* state, const Situation& situation) {
    return std::string(state) + " \"" + situation.title + "\"";
  }

  void playUntilOutOfSight(const Situation& situation) {
    play(situation.desktop);
    for (int i = 0; i < 2; ++i) expectCycle({situation.before}, "before");
    expectCycle({callIs("unknown", situation), situation.stage}, "out of sight");
  }
};

TEST_F(ClosedViews, AnElementThatSaysThatItIsGoneEndsItsCall) {
  for (const Situation& situation : situations()) {
    SCOPED_TRACE(situation.sentence);
    playUntilOutOfSight(situation);
    desktop().attributeFaults[{situation.remembered, "AXRole"}].code =
        platform::code::invalidElement;
    expectCycle({callIs("unknown", situation), situation.stage}, "absent once");
    expectCycle({callIs("left", situation), situation.stage}, "absent twice");
    expectCycle({"", situation.stage}, "afterwards");
  }
}

TEST_F(ClosedViews, AnElementThatSaysAnythingElseLeavesItsCallUnknown) {
  for (const Situation& situation : situations()) {
    for (const NoAnswer& answer : noAnswers({})) {
      if (answer.told == platform::code::invalidElement) continue;
      SCOPED_TRACE(std::string(situation.sentence) + ", whose role " + answer.sentence);
      playUntilOutOfSight(situation);
      desktop().attributeFaults[{situation.remembered, "AXRole"}] = answer.fault;
      for (int i = 0; i < 3; ++i) {
        expectCycle({callIs("unknown", situation), situation.stage}, "meanwhile");
      }
      desktop().attributeFaults.clear();
      expectCycle({callIs("unknown", situation), situation.stage}, "afterwards");
    }
  }
}

// The window says that it is gone in both; only windows that were read can be without it.
TEST_F(ClosedViews, NoWindowsEndACallAndWindowsThatWereNotReadDoNot) {
  const auto playGone = [this] {
    play(meetCall + "at 1500ms:\n  audio com.google.Chrome.helper\n");
    for (int i = 0; i < 2; ++i) expectCycle({joined}, "before");
    desktop().attributeFaults[{"app:101/w", "AXRole"}].code = platform::code::invalidElement;
    desktop().attributeFaults[{"app:101", "AXFocusedWindow"}].code = platform::code::noValue;
  };
  const std::string stage = "no-focused-window";
  playGone();
  desktop().attributeFaults[{"app:101", "AXWindows"}].value = [] { return standins::madeList({}); };
  expectCycle({unknown, stage}, "absent once");
  expectCycle({"left \"Standup\"", stage}, "absent twice");
  for (const NoAnswer& answer : noAnswers({"elements", "empty list"})) {
    SCOPED_TRACE("AXWindows " + answer.sentence);
    playGone();
    desktop().attributeFaults[{"app:101", "AXWindows"}] = answer.fault;
    for (int i = 0; i < 3; ++i) expectCycle({unknown, stage}, "meanwhile");
  }
}

}  // namespace
}  // namespace callmonitor::macos
