// How one element is read: the order of questions, what failures cost, what is never asked for.
#include "evidence/snapshot.h"

#include <gtest/gtest.h>

#include "support/snapshot_reading.h"

namespace callmonitor {
namespace {

using test::described;
using test::failing;
using test::part;
using test::Part;
using test::readPart;
using test::SnapshotReading;
using test::with;
using Names = std::vector<std::string>;

const std::string connectedText =
    "Stay connected after your meeting Chat with everyone or pick specific people";

TEST(Snapshot, OfAnElementHoldsEveryAttribute) {
  Part element = described(part("AXButton", "Leave"), "Leave call");
  element = with(element, "AXSubrole", "AXToggle");
  element = with(element, "AXRoleDescription", "toggle button");
  element = with(element, "AXValue", "on");
  element = with(element, "AXEnabled", false);
  element = with(element, "AXHidden", false);
  element = holding(element, {part("AXGroup"), part("AXGroup")});
  const auto snapshot = readPart(element, {.nativeZoomWindow = true}).result.snapshot;
  ASSERT_TRUE(snapshot);
  EXPECT_EQ(snapshot->role, "AXButton");
  EXPECT_EQ(snapshot->roleDescription, "toggle button");
  EXPECT_EQ(snapshot->subrole, "AXToggle");
  EXPECT_EQ(snapshot->title, "Leave");
  EXPECT_EQ(snapshot->description, "Leave call");
  EXPECT_EQ(snapshot->label(), "Leave Leave call");
  EXPECT_EQ(snapshot->value, "on");
  EXPECT_FALSE(snapshot->hidden);
  EXPECT_FALSE(snapshot->enabled);
  EXPECT_EQ(snapshot->children, (std::vector<NodeKey>{{"root/0"}, {"root/1"}}));
}

TEST(Snapshot, OfARoleAloneIsVisibleEnabledAndEmpty) {
  const SnapshotReading reading = readPart(part("AXGroup"));
  ASSERT_TRUE(reading.result.snapshot);
  const AXSnapshot<NodeKey>& snapshot = *reading.result.snapshot;
  EXPECT_EQ(snapshot.roleDescription + snapshot.subrole + snapshot.title + snapshot.description +
                snapshot.value,
            "");
  EXPECT_FALSE(snapshot.hidden);
  EXPECT_TRUE(snapshot.enabled);
  EXPECT_TRUE(snapshot.children.empty());
  EXPECT_TRUE(reading.result.failures.empty()) << "absent attributes are no failures";
}

TEST(Snapshot, IsReadInOneOrder) {
  EXPECT_EQ(readPart(part("AXButton", "Leave")).asked,
            (Names{"AXRole", "AXSubrole", "AXTitle", "AXHidden", "AXEnabled", "AXDescription",
                   "AXValue", "AXChildren"}));
}

TEST(Snapshot, AsksForTheRoleDescriptionInANativeZoomWindowOnly) {
  EXPECT_EQ(readPart(part("AXButton", "Leave"), {.nativeZoomWindow = true}).asked,
            (Names{"AXRole", "AXRoleDescription", "AXSubrole", "AXTitle", "AXHidden", "AXEnabled",
                   "AXDescription", "AXValue", "AXChildren"}));
  const Part tile = with(part("AXGroup"), "AXRoleDescription", "video render");
  EXPECT_EQ(readPart(tile).result.snapshot->roleDescription, "");
}

struct RoleCase {
  std::string_view sentence;
  Part element;
  Names failures;
};

TEST(Snapshot, NeedsARole) {
  const RoleCase cases[] = {
      {"a role that fails", failing(part("AXGroup"), "AXRole", -25200), {"AXRole:-25200"}},
      {"an element that is gone", failing(part("AXGroup"), "AXRole", -25202), {"AXRole:-25202"}},
      {"a role past the deadline", failing(part("AXGroup"), "AXRole", -25204), {"AXRole:-25204"}},
      {"an unsupported role is no failure", failing(part("AXGroup"), "AXRole", -25205), {}},
      {"a role without a value is no failure", failing(part("AXGroup"), "AXRole", -25212), {}},
      {"an empty role", part(""), {}},
      {"a role of nothing", with(part(""), "AXRole", std::monostate{}), {}},
      {"a role that is no text", with(part(""), "AXRole", true), {}},
  };
  for (const RoleCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const SnapshotReading reading = readPart(row.element);
    EXPECT_FALSE(reading.result.snapshot);
    EXPECT_EQ(reading.result.failures, row.failures);
    EXPECT_EQ(reading.asked, Names{"AXRole"}) << "nothing else is asked for";
  }
}

TEST(Snapshot, TakesAnAttributeForAbsentWhenItIsUnsupportedOrHasNoValue) {
  for (const std::int32_t code : {-25205, -25212}) {
    for (const std::string name : {"AXRoleDescription", "AXSubrole", "AXTitle", "AXHidden",
                                   "AXEnabled", "AXDescription", "AXValue", "AXChildren"}) {
      SCOPED_TRACE(name + ":" + std::to_string(code));
      const SnapshotReading reading =
          readPart(failing(part("AXButton", "Leave"), name, code), {.nativeZoomWindow = true});
      ASSERT_TRUE(reading.result.snapshot);
      EXPECT_TRUE(reading.result.failures.empty());
      EXPECT_TRUE(reading.result.snapshot->enabled);
      EXPECT_FALSE(reading.result.snapshot->hidden);
    }
  }
}

TEST(Snapshot, ReportsEveryOtherFailureAndGoesOn) {
  for (const std::int32_t code : {-25200, -25201, -25202, -25204, -25211}) {
    for (const std::string name : {"AXRoleDescription", "AXSubrole", "AXTitle", "AXHidden",
                                   "AXEnabled", "AXDescription", "AXValue", "AXChildren"}) {
      const std::string failure = name + ":" + std::to_string(code);
      SCOPED_TRACE(failure);
      const SnapshotReading reading =
          readPart(failing(part("AXButton", "Leave"), name, code), {.nativeZoomWindow = true});
      ASSERT_TRUE(reading.result.snapshot);
      EXPECT_EQ(reading.result.failures, Names{failure});
      EXPECT_EQ(reading.asked.size(), 9U);
      EXPECT_TRUE(reading.result.snapshot->enabled) << "a failed read means enabled";
      EXPECT_FALSE(reading.result.snapshot->hidden) << "a failed read means visible";
    }
  }
}

TEST(Snapshot, GivesItsFailuresInAscendingOrder) {
  Part element = part("AXButton");
  for (const std::string name :
       {"AXSubrole", "AXTitle", "AXDescription", "AXValue", "AXChildren"}) {
    element = failing(element, name, -25200);
  }
  EXPECT_EQ(readPart(element).result.failures,
            (Names{"AXChildren:-25200", "AXDescription:-25200", "AXSubrole:-25200",
                   "AXTitle:-25200", "AXValue:-25200"}));
}

TEST(Snapshot, SpellsAFailureAsNameAndCode) {
  EXPECT_EQ(failureText("AXDescription", -25200), "AXDescription:-25200");
  EXPECT_EQ(failureText("AXRole", -25204), "AXRole:-25204");
}

struct FlagCase {
  std::string_view sentence;
  platform::ValueOf<NodeKey> value;
  bool enabled;
  bool hidden;
};

TEST(Snapshot, IsDisabledByFalseAndHiddenByTrueAlone) {
  const FlagCase cases[] = {
      {"true", true, true, true},
      {"false", false, false, false},
      {"nothing", std::monostate{}, true, false},
      {"a text", "false", true, false},
      {"a number", platform::OtherType{}, true, false},
      {"an element", NodeKey{"root"}, true, false},
  };
  for (const FlagCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(readPart(with(part("AXButton"), "AXEnabled", row.value)).result.snapshot->enabled,
              row.enabled);
    EXPECT_EQ(readPart(with(part("AXButton"), "AXHidden", row.value)).result.snapshot->hidden,
              row.hidden);
  }
}

TEST(Snapshot, HasNoChildrenWhereTheAnswerIsNoListOfElements) {
  for (const platform::ValueOf<NodeKey>& value :
       {platform::ValueOf<NodeKey>(std::monostate{}), platform::ValueOf<NodeKey>("text"),
        platform::ValueOf<NodeKey>(NodeKey{"root"}),
        platform::ValueOf<NodeKey>(platform::OtherType{})}) {
    const SnapshotReading reading = readPart(with(part("AXGroup"), "AXChildren", value));
    EXPECT_TRUE(reading.result.snapshot->children.empty());
    EXPECT_TRUE(reading.result.failures.empty());
  }
}

struct ExclusionCase {
  std::string_view sentence;
  Part element;
  bool webRoot;
  bool excluded;
};

TEST(Snapshot, NeverAsksForValueAndChildrenOfExcludedContent) {
  const std::string chat = "Chat | Meeting with QA | Microsoft Teams";
  const ExclusionCase cases[] = {
      {"a text input", with(part("AXTextArea"), "AXValue", "secret"), false, true},
      {"a list", part("AXList"), false, true},
      {"a log", subrole(part("AXGroup"), "AXApplicationLog"), false, true},
      {"a chat by its title", part("AXGroup", chat), false, true},
      {"a chat by its description", described(part("AXGroup"), "In-call messages"), false, true},
      {"a page titled chat that is not the root", part("AXWebArea", chat), false, true},
      {"the root of a page titled chat", part("AXWebArea", chat), true, false},
      {"a root that is no page", part("AXGroup", chat), true, true},
      {"a page without a chat", part("AXWebArea", "Meet"), false, false},
      {"a post-call sentence", described(part("AXStaticText"), connectedText), false, false},
      {"a post-call sentence in a log",
       subrole(described(part("AXStaticText"), connectedText), "AXApplicationLog"), false, true},
      {"a post-call sentence in a group", part("AXGroup", connectedText), false, true},
      {"a button", part("AXButton", "Leave"), false, false},
  };
  const Names all{"AXRole",    "AXSubrole",     "AXTitle", "AXHidden",
                  "AXEnabled", "AXDescription", "AXValue", "AXChildren"};
  const Names short6(all.begin(), all.begin() + 6);
  for (const ExclusionCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const SnapshotReading reading = readPart(row.element, {.webRoot = row.webRoot});
    EXPECT_EQ(reading.asked, row.excluded ? short6 : all);
    ASSERT_TRUE(reading.result.snapshot);
    EXPECT_EQ(reading.result.snapshot->excluded(row.webRoot), row.excluded);
    EXPECT_EQ(reading.result.snapshot->value, "");
  }
}

}  // namespace
}  // namespace callmonitor
