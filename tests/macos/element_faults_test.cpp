// A fault of one attribute of one element does what that attribute is read for, and no more; an
// error that comes too late is an answer that did not come.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "macos/fault_effects.h"
#include "macos/faulty_answers.h"

namespace callmonitor::macos {
namespace {

struct ElementRow {
  const char* element;
  const char* attribute;
  const char* calls;
  const char* stage;
  bool told;  // its failure is named in the scan
};

const std::vector<ElementRow>& elementRows() {
  static const std::vector<ElementRow> rows{
      {"app:101", "AXWindows", unknown, "complete", false},
      {"app:101", "AXFocusedWindow", joined, "no-focused-window", false},
      {"app:101/w", "AXHidden", joined, "complete", false},
      {"app:101/w", "AXRole", unknown, "no-provider-surface", false},
      {"app:101/w", "AXChildren", unknown, "no-provider-surface", false},
      {"app:101/w", "AXTitle", "joined media \"\"", "complete", false},
      {"app:101/p", "AXURL", unknown, "no-provider-surface", false},
      {"app:101/p", "AXRole", unknown, "no-provider-surface", false},
      {"app:101/p", "AXHidden", joined, "complete", true},
      {"app:101/p", "AXTitle", joined, "complete", true},
      {"app:101/p", "AXChildren", unknown, "complete", true},
      // An element without role is not known at all, and the look at the page is not whole.
      {"app:101/leave", "AXRole", unknown, "incomplete", true},
      {"app:101/leave", "AXSubrole", joined, "complete", true},
      {"app:101/leave", "AXTitle", joined, "complete", true},
      {"app:101/leave", "AXHidden", joined, "complete", true},
      {"app:101/leave", "AXEnabled", joined, "complete", true},
      {"app:101/leave", "AXDescription", unknown, "complete", true},
      {"app:101/leave", "AXValue", joined, "complete", true},
      {"app:101/leave", "AXChildren", joined, "complete", true},
  };
  return rows;
}

struct ElementFaults : FaultEffects {
  void expectFault(const ElementRow& row, const std::string& sentence,
                   const standins::AttributeFault& fault, std::int32_t code) {
    expectEffect(
        meetCall, {joined}, std::string(row.element) + " " + row.attribute + ": " + sentence,
        [&] {
          desktop().attributeFaults[{row.element, row.attribute}] = fault;
        },
        [] { desktop().attributeFaults.clear(); },
        {row.calls, row.stage, row.told ? told(row.attribute, code) : Words()});
  }
};

TEST_F(ElementFaults, AnErrorThatComesInTimeIsThatError) {
  for (const ElementRow& row : elementRows()) {
    for (const std::int32_t code : failing) {
      expectFault(row, std::to_string(code) + " at once", {code, {}, {}}, code);
      expectFault(row, std::to_string(code) + " after a while", {code, {}, 0.05}, code);
    }
  }
}

TEST_F(ElementFaults, AnAnswerThatComesTooLateIsNoneWhateverItIs) {
  for (const ElementRow& row : elementRows()) {
    expectFault(row, "a late answer", {{}, {}, 10}, platform::code::cannotComplete);
    for (const std::int32_t code : {platform::code::failure, platform::code::invalidElement,
                                    platform::code::attributeUnsupported}) {
      expectFault(row, std::to_string(code) + " too late", {code, {}, 10},
                  platform::code::cannotComplete);
    }
  }
}

// What a late answer of one element costs in a cycle: its time-out as often as it is asked for.
TEST_F(ElementFaults, ALateAnswerOfOneElementCostsItsTimeOutEachTime) {
  struct Row {
    const char* element;
    const char* attribute;
    int reads;
  };
  for (const Row& row : std::vector<Row>{
           {"app:101", "AXWindows", 1},
           // By the look at all applications, and by the one at the client in front.
           {"app:101/p", "AXURL", 2},
           // By the tracker's question whether the page still exists besides.
           {"app:101/p", "AXRole", 3},
       }) {
    SCOPED_TRACE(std::string(row.element) + " " + row.attribute);
    play(meetCall);
    expectCycle({joined}, "before");
    desktop().attributeFaults[{row.element, row.attribute}].delay = 10;
    const double start = desktop().uptime;
    (void)cycle();
    EXPECT_NEAR(desktop().uptime - start, row.reads * 0.2 + 1, 1e-9);
  }
}

}  // namespace
}  // namespace callmonitor::macos
