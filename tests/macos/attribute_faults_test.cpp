// What goes wrong in accessibility messages changes what is told as it should, ends nothing, leaves
// nothing behind, and is over when it is over.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "macos/fault_effects.h"
#include "macos/faulty_answers.h"

namespace callmonitor::macos {
namespace {

using standins::AttributeFault;

constexpr const char* joinedUntitled = "joined media \"\"";
constexpr const char* unknownUntitled = "unknown \"\"";

struct AttributeFaults : FaultEffects {
  void expectAttributeEffect(const std::string& attribute, const std::string& sentence,
                             const AttributeFault& fault, const Expected& faulty) {
    expectEffect(
        meetCall, {joined}, attribute + ": " + sentence,
        [&] {
          desktop().attributeFaults[{"", attribute}] = fault;
        },
        [] { desktop().attributeFaults.clear(); }, faulty);
  }
};

struct AttributeRow {
  const char* attribute;
  // While it fails, gives nothing, or gives a value of a type that it does not have.
  const char* calls;
  const char* stage;
  bool told;  // its failures are named in the scan
  // While its answers are late on every element.
  const char* lateCalls;
  const char* lateStage;
  std::vector<std::string> types;  // that it may have
};

// The late answers cost 0.2 s on each of the page and its three buttons, more than the half second
// of a scan: an incomplete look decides nothing.
const std::vector<AttributeRow>& attributeRows() {
  static const std::vector<AttributeRow> rows{
      {"AXWindows", unknown, "complete", false, unknown, "complete", {"elements"}},
      {"AXFocusedWindow",
       joined,
       "no-focused-window",
       false,
       joined,
       "no-focused-window",
       {"element"}},
      {"AXRole", unknown, "no-provider-surface", false, unknown, "no-provider-surface", {"text"}},
      {"AXChildren",
       unknown,
       "no-provider-surface",
       false,
       unknown,
       "no-provider-surface",
       {"elements"}},
      {"AXURL",
       unknown,
       "no-provider-surface",
       false,
       unknown,
       "no-provider-surface",
       {"text", "address"}},
      {"AXHidden", joined, "complete", true, unknown, "incomplete", {"boolean"}},
      {"AXTitle", joinedUntitled, "complete", true, unknownUntitled, "incomplete", {"text"}},
      {"AXDescription", unknown, "complete", true, unknown, "incomplete", {"text"}},
      {"AXEnabled", joined, "complete", true, unknown, "incomplete", {"boolean"}},
      {"AXSubrole", joined, "complete", true, unknown, "incomplete", {"text"}},
      {"AXValue", joined, "complete", true, unknown, "incomplete", {"text"}},
  };
  return rows;
}

TEST_F(AttributeFaults, AnAttributeThatFailsEverywhereIsToldWhereAScanReadsIt) {
  for (const AttributeRow& row : attributeRows()) {
    for (const std::int32_t code : failing) {
      const Words named = row.told ? told(row.attribute, code) : Words();
      expectAttributeEffect(row.attribute, "fails with " + std::to_string(code),
                            {.code = code, .value = {}, .delay = {}},
                            {row.calls, row.stage, named});
      expectAttributeEffect(
          row.attribute, "fails with " + std::to_string(code) + " beside a value",
          {.code = code, .value = [] { return standins::madeText("text"); }, .delay = {}},
          {row.calls, row.stage, named});
    }
  }
}

TEST_F(AttributeFaults, AnAttributeThatIsNotThereIsNoFailure) {
  for (const AttributeRow& row : attributeRows()) {
    for (const std::int32_t code : notThere) {
      expectAttributeEffect(row.attribute, "is absent by " + std::to_string(code),
                            {.code = code, .value = {}, .delay = {}}, {row.calls, row.stage, {}});
    }
    expectAttributeEffect(row.attribute, "succeeds with NULL",
                          {.code = 0, .value = [] { return nullptr; }, .delay = {}},
                          {row.calls, row.stage, {}});
  }
}

TEST_F(AttributeFaults, AValueOfATypeThatAnAttributeDoesNotHaveIsNone) {
  for (const AttributeRow& row : attributeRows()) {
    for (const TypedValue& value : typedValues()) {
      if (std::ranges::count(row.types, value.type) > 0) continue;
      expectAttributeEffect(row.attribute, "gives: " + value.type,
                            {.code = 0, .value = value.make, .delay = {}},
                            {row.calls, row.stage, {}});
    }
  }
}

TEST_F(AttributeFaults, AnAnswerThatIsLateCostsItsTimeOutAndNoMore) {
  for (const AttributeRow& row : attributeRows()) {
    SCOPED_TRACE(row.attribute);
    play(meetCall);
    for (int i = 0; i < 2; ++i) expectCycle({joined}, "before");
    desktop().attributeFaults[{"", row.attribute}].delay = 10;
    for (int i = 0; i < 2; ++i) {
      const double start = desktop().uptime;
      const std::vector<Json> records = cycle();
      EXPECT_EQ(calls(records), row.lateCalls);
      EXPECT_EQ(stage(records), row.lateStage);
      // The budget of a cycle, the half second of the look at the client in front, one message
      // over each of them, and the second that the test lets pass.
      EXPECT_LT(desktop().uptime - start, 1.2 + 0.5 + 2 * 0.2 + 1);
    }
    desktop().attributeFaults.clear();
    for (int i = 0; i < 2; ++i) expectCycle({joined}, "afterwards");
  }
}

TEST_F(AttributeFaults, AnApplicationThatAnswersNothingLeavesItsCallUnknown) {
  for (const std::int32_t code : everyCode()) {
    expectAttributeEffect("", "every read answers " + std::to_string(code),
                          {.code = code, .value = {}, .delay = {}}, {unknown, "no-focused-window"});
  }
  expectAttributeEffect("", "every read is late", {.code = {}, .value = {}, .delay = 10},
                        {unknown, "no-focused-window"});
}

TEST_F(AttributeFaults, AnAttributeThatCannotBeSetIsTriedAgainInEveryCycle) {
  const auto sets = [] {
    return std::ranges::count(desktop().messages, "set app:101 AXEnhancedUserInterface");
  };
  for (const std::int32_t code : everyCode()) {
    SCOPED_TRACE(code);
    play(meetCall);
    desktop().recordMessages = true;
    desktop().setCode = code;
    for (int i = 1; i <= 3; ++i) {
      expectCycle({joined}, "meanwhile");
      EXPECT_EQ(sets(), i);
    }
    desktop().setCode.reset();
    for (int i = 0; i < 2; ++i) expectCycle({joined}, "afterwards");
    EXPECT_EQ(sets(), 4) << "once more, and then no more";
  }
}

TEST_F(AttributeFaults, ASettingThatIsLateCostsItsTimeOut) {
  play(meetCall);
  desktop().setDelay = 10;
  const double start = desktop().uptime;
  expectCycle({joined}, "meanwhile");
  EXPECT_NEAR(desktop().uptime - start, 0.2 + 1, 1e-9);
}

}  // namespace
}  // namespace callmonitor::macos
