// Sound that cannot be read is not known, which is neither silence nor a shorter list.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "macos/fault_effects.h"

namespace callmonitor::macos {
namespace {

using standins::AudioFaults;

constexpr OSStatus failure = -1;

// An application that counts only for its sound, and somebody else's.
constexpr const char* genericCall = R"(
app calls org.example.Calls
  window w "Standup"
    button description="Leave call"
    button description="Turn off microphone"
    button description="Turn off camera"
audio org.example.Calls in out
audio org.example.Player out
end 1h
)";

const Words absent{"absent"};
const Words asWritten{"org.example.Calls in out", "org.example.Player out"};

AudioFaults& faults() {
  return desktop().audioFaults;
}

struct SoundFaults : FaultEffects {
  void expectSound(const std::string& sentence, const std::function<void()>& begin,
                   const Words& list, const char* calls) {
    expectEffect(
        genericCall, {joined, "no-front-provider"}, sentence,
        [&] {
          begin();
          EXPECT_EQ(sounds(), list);
        },
        [] {
          faults() = {};
          desktop().majorVersion = 14;
          desktop().minorVersion = 2;
          EXPECT_EQ(sounds(), asWritten);
        },
        {calls, "no-front-provider"});
  }
};

void beSystem(long major, long minor) {
  desktop().majorVersion = major;
  desktop().minorVersion = minor;
}

TEST_F(SoundFaults, WhatIsListedIsAllThatWasReadOrNothing) {
  struct Row {
    const char* sentence;
    std::function<void()> begin;
    Words list;
    const char* calls;
  };
  for (const Row& row : std::vector<Row>{
           {"the size fails", [] { faults().sizeStatus = failure; }, absent, unknown},
           {"a size of nothing", [] { faults().size = 0; }, absent, unknown},
           {"a size of an id and a half", [] { faults().size = 6; }, absent, unknown},
           {"a size over the limit", [] { faults().size = 16388; }, absent, unknown},
           {"a size of exactly the limit", [] { faults().size = 16384; }, asWritten, joined},
           {"the list fails", [] { faults().listStatus = failure; }, absent, unknown},
           {"a quarter of an id is returned", [] { faults().listReturned = 1; }, absent, unknown},
           {"half an id is returned", [] { faults().listReturned = 2; }, absent, unknown},
           {"an id and a half are returned", [] { faults().listReturned = 6; }, absent, unknown},
           {"an id and three quarters are returned", [] { faults().listReturned = 7; }, absent,
            unknown},
           {"no id is returned", [] { faults().listReturned = 0; }, {}, unknown},
           {"more is returned than was asked for", [] { faults().listReturned = 400; }, asWritten,
            joined},
           {"system 14.1", [] { beSystem(14, 1); }, absent, unknown},
           {"system 13.6", [] { beSystem(13, 6); }, absent, unknown},
           {"system 15.0", [] { beSystem(15, 0); }, asWritten, joined},
       }) {
    expectSound(row.sentence, row.begin, row.list, row.calls);
  }
}

struct ProcessFault {
  const char* sentence;
  std::function<void()> begin;
};

// What keeps a process from being read.
const std::vector<ProcessFault>& processFaults() {
  static const std::vector<ProcessFault> all{
      {"the bundle identifier fails", [] { faults().bundleStatus = failure; }},
      {"the bundle identifier fails and there is none",
       [] {
         faults().bundleStatus = failure;
         faults().bundle = [] { return nullptr; };
       }},
      {"the bundle identifier is NULL", [] { faults().bundle = [] { return nullptr; }; }},
      {"the bundle identifier is NULL, of no size",
       [] {
         faults().bundle = [] { return nullptr; };
         faults().bundleReturned = 0;
       }},
      {"the bundle identifier is a number",
       [] { faults().bundle = [] { return standins::madeNumber(1); }; }},
      {"input fails", [] { faults().inputStatus = failure; }},
      {"input of no size", [] { faults().inputReturned = 0; }},
      {"input of half the size", [] { faults().inputReturned = 2; }},
      {"input of twice the size", [] { faults().inputReturned = 8; }},
      {"output fails", [] { faults().outputStatus = failure; }},
      {"output of no size", [] { faults().outputReturned = 0; }},
      {"output of half the size", [] { faults().outputReturned = 2; }},
      {"output of twice the size", [] { faults().outputReturned = 8; }},
  };
  return all;
}

TEST_F(SoundFaults, OneProcessThatCannotBeReadTakesTheWholeListAway) {
  for (const ProcessFault& fault : processFaults()) {
    for (std::size_t place = 0; place < 2; ++place) {
      expectSound(
          std::string(fault.sentence) + ", of process " + std::to_string(place),
          [&] {
            fault.begin();
            faults().onlyProcess = place;
          },
          absent, unknown);
    }
  }
}

TEST_F(SoundFaults, WhatAProcessSaysCounts) {
  struct Row {
    const char* sentence;
    std::function<void()> begin;
    const char* first;  // the process of the list that the call is of
    const char* calls;
  };
  for (const Row& row : std::vector<Row>{
           {"input of any number but zero", [] { faults().inputValue = 0x80000000; },
            "org.example.Calls in out", joined},
           {"no input", [] { faults().inputValue = 0; }, "org.example.Calls out", unknown},
           {"output of any number but zero", [] { faults().outputValue = 2; },
            "org.example.Calls in out", joined},
           {"no output", [] { faults().outputValue = 0; }, "org.example.Calls in", unknown},
           {"an empty bundle identifier",
            [] { faults().bundle = [] { return standins::madeText(""); }; }, " in out", unknown},
           // A reference is there or is not, whatever is said of its size.
           {"a bundle identifier of no size", [] { faults().bundleReturned = 0; },
            "org.example.Calls in out", joined},
           {"a bundle identifier of half the size", [] { faults().bundleReturned = 4; },
            "org.example.Calls in out", joined},
       }) {
    expectSound(
        row.sentence,
        [&] {
          row.begin();
          faults().onlyProcess = 0;
        },
        {row.first, "org.example.Player out"}, row.calls);
  }
}

// A call's tab that is closed after its second cycle, in a browser of which one process still plays
// and one is silent.
std::string closedTab(bool playingFirst) {
  const std::string silent = "audio com.google.Chrome.helper\n";
  const std::string playing = "audio com.google.Chrome.helper.renderer out\n";
  return meetWindow + "front chrome\n" + (playingFirst ? playing + silent : silent + playing) + R"(
at 1500ms:
  close p
  add w
    page news https://news.example.org/
end 1h
)";
}

// A browser that plays keeps its call; one that is silent has left it when the second cycle says
// so.
TEST_F(SoundFaults, SoundThatIsNotKnownIsNoSilenceThatEndsACall) {
  const Expected held{unknown, "no-provider-surface"};
  for (const bool playingFirst : {false, true}) {
    for (const ProcessFault& fault : processFaults()) {
      SCOPED_TRACE(fault.sentence);
      play(closedTab(playingFirst));
      for (int i = 0; i < 2; ++i) expectCycle({joined}, "before");
      fault.begin();
      faults().onlyProcess = playingFirst ? 0 : 1;
      for (int i = 0; i < 3; ++i) expectCycle(held, "meanwhile");
      faults() = {};
      for (int i = 0; i < 3; ++i) expectCycle(held, "while it plays");
      faults().outputValue = 0;
      expectCycle(held, "in silence");
      expectCycle({"left \"Standup\"", "no-provider-surface"}, "in silence");
      expectCycle({"", "no-provider-surface"}, "afterwards");
    }
  }
}

}  // namespace
}  // namespace callmonitor::macos
