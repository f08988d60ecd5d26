// How far a scan goes and what it says about where it stopped.
#include <gtest/gtest.h>

#include "support/synthetic_page.h"

namespace callmonitor {
namespace {

using test::crowded;
using test::failing;
using test::holding;
using test::part;
using test::Part;
using test::scanData;
using test::treeOfSize;
using Names = std::vector<std::string>;

// A predicate that says yes so many times and no ever after, and counts.
struct Patience {
  int left = 0;
  int asked = 0;
};

auto lasting(Patience& patience) {
  return [&patience] {
    ++patience.asked;
    return patience.left-- > 0;
  };
}

TEST(LabelScanBounds, FreshEvidenceIsCompleteAndEmpty) {
  const Evidence fresh;
  EXPECT_TRUE(fresh.controls.empty() && fresh.notices.empty());
  EXPECT_TRUE(fresh.failedAttributes.empty() && fresh.failedControlHints.empty());
  EXPECT_EQ(fresh.nodes, 0);
  EXPECT_EQ(fresh.failedNodes, 0);
  EXPECT_TRUE(fresh.complete);
  EXPECT_FALSE(fresh.nativeZoomTile);
  EXPECT_FALSE(fresh.truncated);
  EXPECT_FALSE(fresh.deadline);
}

struct BudgetCase {
  std::string_view sentence;
  std::size_t elements;
  int budget;
  int nodes;
  bool truncated;
  bool complete;
};

TEST(LabelScanBounds, ABudgetLimitsTheElementsTaken) {
  const BudgetCase cases[] = {
      {"a budget of 0 takes nothing", 3, 0, 0, true, false},
      {"a budget below 0 takes nothing", 3, -1, 0, true, false},
      {"3 elements with a budget of 2", 3, 2, 2, true, false},
      {"3 elements with a budget of 3", 3, 3, 3, false, true},
      {"3 elements with a budget of 4", 3, 4, 3, false, true},
      {"one element with a budget of 1", 1, 1, 1, false, true},
      {"1600 elements with the usual budget", 1600, labelScanBudget, 1600, false, true},
      {"1601 elements with the usual budget", 1601, labelScanBudget, 1600, true, false},
  };
  for (const BudgetCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const Evidence evidence = scanData(treeOfSize(row.elements), {}, row.budget);
    EXPECT_EQ(evidence.nodes, row.nodes);
    EXPECT_EQ(evidence.truncated, row.truncated);
    EXPECT_EQ(evidence.complete, row.complete);
    EXPECT_FALSE(evidence.deadline);
    EXPECT_EQ(evidence.failedNodes, 0);
  }
}

TEST(LabelScanBounds, ABudgetOf0ReadsNothingAndAsksForNoTime) {
  Patience patience{100};
  const Evidence evidence = scanData(part("AXButton", "Leave"), {}, 0, lasting(patience));
  EXPECT_TRUE(evidence.controls.empty());
  EXPECT_EQ(patience.asked, 0);
}

TEST(LabelScanBounds, ALiveScanTakes1600Elements) {
  Evidence evidence = test::scanLive(treeOfSize(1600));
  EXPECT_EQ(evidence.nodes, 1600);
  EXPECT_TRUE(evidence.complete);
  EXPECT_FALSE(evidence.truncated);
  EXPECT_EQ(test::readsNamed("AXRole"), 1600);

  evidence = test::scanLive(treeOfSize(1601));
  EXPECT_EQ(evidence.nodes, 1600);
  EXPECT_FALSE(evidence.complete);
  EXPECT_TRUE(evidence.truncated);
  EXPECT_FALSE(evidence.deadline);
  EXPECT_EQ(test::readsNamed("AXRole"), 1600);
}

TEST(LabelScanBounds, KeepsTheFirst100ChildrenOfAnElement) {
  Evidence evidence = test::scanLive(crowded(100));
  EXPECT_EQ(evidence.nodes, 101);
  EXPECT_TRUE(evidence.complete);
  EXPECT_FALSE(evidence.truncated);

  for (const std::size_t children : {101U, 150U}) {
    SCOPED_TRACE(children);
    Part page = crowded(children);
    page.children[0] = part("AXButton", "first");
    page.children[99] = part("AXButton", "hundredth");
    page.children[100] = part("AXButton", "beyond");
    evidence = test::scanLive(page);
    EXPECT_EQ(evidence.nodes, 101);
    EXPECT_EQ(evidence.controls, (Names{"hundredth", "", "first", ""}));
    EXPECT_TRUE(evidence.truncated);
    EXPECT_FALSE(evidence.complete);
    EXPECT_FALSE(evidence.deadline);
    EXPECT_FALSE(test::wasRead("root/100"));
    EXPECT_EQ(scanData(page).nodes, 101);
  }
}

TEST(LabelScanBounds, TheChildCapIsOneElementsOwn) {
  const Evidence evidence =
      test::scanLive(holding(part("AXWindow"), {crowded(100), crowded(100), crowded(100)}));
  EXPECT_EQ(evidence.nodes, 304);
  EXPECT_TRUE(evidence.complete);
}

struct PatienceCase {
  std::string_view sentence;
  int yes;
  int budget;
  int nodes;
  bool truncated;
  bool complete;
  bool deadline;
  int asked;
};

// Three elements: a root and its two children.
TEST(LabelScanBounds, AsksForTimeBeforeEachElementAndOnceAfterTheWalk) {
  const PatienceCase cases[] = {
      {"time for everything", 100, 10, 3, false, true, false, 4},
      {"no time at all", 0, 10, 0, false, false, true, 2},
      {"time for one element", 1, 10, 1, false, false, true, 3},
      {"time for two elements", 2, 10, 2, false, false, true, 4},
      {"time that ends with the last element", 3, 10, 3, false, false, true, 4},
      {"a budget that ends with time left", 100, 2, 2, true, false, false, 3},
      {"a budget and time that end together", 2, 2, 2, true, false, true, 3},
      {"a budget that just suffices", 100, 3, 3, false, true, false, 4},
  };
  const Part page = treeOfSize(3);
  for (const PatienceCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    Patience patience{row.yes};
    const Evidence evidence = scanData(page, {}, row.budget, lasting(patience));
    EXPECT_EQ(evidence.nodes, row.nodes);
    EXPECT_EQ(evidence.truncated, row.truncated);
    EXPECT_EQ(evidence.complete, row.complete);
    EXPECT_EQ(evidence.deadline, row.deadline);
    EXPECT_EQ(patience.asked, row.asked);
  }
}

TEST(LabelScanBounds, AnElementThatCannotBeReadCostsItsPlaceAndTheWalkGoesOn) {
  const Part broken =
      failing(holding(part("AXGroup"), {part("AXButton", "inside")}), "AXRole", -25200);
  const Part page =
      holding(part("AXWindow"), {part("AXButton", "before"), broken, part("AXButton", "behind")});
  const Evidence evidence = test::scanLive(page);
  EXPECT_EQ(evidence.nodes, 4);
  EXPECT_EQ(evidence.failedNodes, 1);
  EXPECT_EQ(evidence.failedAttributes, Names{"AXRole:-25200"});
  EXPECT_EQ(evidence.controls, (Names{"behind", "", "before", ""}));
  EXPECT_FALSE(evidence.complete);
  EXPECT_FALSE(evidence.truncated);
  EXPECT_FALSE(evidence.deadline);
  EXPECT_EQ(scanData(page, {}, 3).nodes, 3) << "it counts against the budget";
}

TEST(LabelScanBounds, AnElementWithoutARoleIsAFailedNodeWithoutAFailureText) {
  for (const std::int32_t code : {-25205, -25212}) {
    SCOPED_TRACE(code);
    const Evidence evidence = test::scanLive(failing(part("AXWindow"), "AXRole", code));
    EXPECT_EQ(evidence.nodes, 1);
    EXPECT_EQ(evidence.failedNodes, 1);
    EXPECT_FALSE(evidence.complete);
    EXPECT_TRUE(evidence.failedAttributes.empty());
  }
}

TEST(LabelScanBounds, ARootThatIsGoneIsOneFailedNode) {
  scripted::reset();
  const Evidence evidence = test::scanShown();
  EXPECT_EQ(evidence.nodes, 1);
  EXPECT_EQ(evidence.failedNodes, 1);
  EXPECT_EQ(evidence.failedAttributes, Names{"AXRole:-25202"});
  EXPECT_FALSE(evidence.complete);
}

TEST(LabelScanBounds, AnAttributeThatFailsLeavesTheEvidenceComplete) {
  for (const std::string name : {"AXSubrole", "AXTitle", "AXHidden", "AXEnabled", "AXDescription",
                                 "AXValue", "AXChildren"}) {
    SCOPED_TRACE(name);
    const Evidence evidence = test::scanLive(failing(part("AXButton", "Leave"), name, -25200));
    EXPECT_TRUE(evidence.complete);
    EXPECT_EQ(evidence.failedNodes, 0);
    EXPECT_EQ(evidence.failedAttributes, Names{name + ":-25200"});
  }
}

TEST(LabelScanBounds, GivesEachFailureOnceInAscendingOrder) {
  const Part window = holding(
      failing(part("AXWindow"), "AXValue", -25204),
      {failing(part("AXGroup"), "AXTitle", -25200), failing(part("AXGroup"), "AXTitle", -25200),
       failing(part("AXGroup"), "AXTitle", -25204), failing(part("AXGroup"), "AXRole", -25200),
       failing(part("AXGroup"), "AXDescription", -25200)});
  EXPECT_EQ(test::scanLive(window).failedAttributes,
            (Names{"AXDescription:-25200", "AXRole:-25200", "AXTitle:-25200", "AXTitle:-25204",
                   "AXValue:-25204"}));
}

TEST(LabelScanBounds, KeepsTheFirst16DistinctFailures) {
  // The last child is visited first: its failure is the first one kept.
  const auto failures = [](int count) {
    Part window = part("AXWindow");
    for (int i = count; i >= 1; --i) {
      window.children.push_back(failing(part("AXGroup"), "AXTitle", -26000 - i));
      window.children.push_back(failing(part("AXGroup"), "AXTitle", -26000 - i));
    }
    return test::scanLive(window).failedAttributes;
  };
  Names expected;
  for (int i = 1; i <= 16; ++i) expected.push_back("AXTitle:" + std::to_string(-26000 - i));
  EXPECT_EQ(failures(16), expected);
  EXPECT_EQ(failures(17), expected) << "the 17th is not kept";
  EXPECT_EQ(failures(40), expected);
  expected.pop_back();
  EXPECT_EQ(failures(15), expected);
}

TEST(LabelScanBounds, StopsAskingThePlatformAtTheDeadline) {
  test::show(holding(part("AXButton", "Leave"), {part("AXButton", "Mute")}));
  test::slow("root", "AXRole", 0.25);
  test::slow("root", "AXTitle", 0.25);
  const Evidence evidence = test::scanShown();
  EXPECT_EQ(test::readsOf("root"), (Names{"AXRole", "AXSubrole", "AXTitle"}));
  EXPECT_EQ(evidence.failedAttributes,
            (Names{"AXChildren:-25204", "AXDescription:-25204", "AXEnabled:-25204",
                   "AXHidden:-25204", "AXValue:-25204"}));
  EXPECT_EQ(evidence.controls, (Names{"Leave", ""})) << "what was read in time still counts";
  EXPECT_EQ(evidence.nodes, 1);
  EXPECT_EQ(evidence.failedNodes, 0);
  EXPECT_TRUE(evidence.deadline);
  EXPECT_FALSE(evidence.complete);
  EXPECT_FALSE(evidence.truncated);
}

TEST(LabelScanBounds, AnAnswerThatPassesTheDeadlineIsStillTaken) {
  test::show(part("AXButton", "Leave"));
  test::slow("root", "AXChildren", 0.75);
  const Evidence evidence = test::scanShown();
  EXPECT_EQ(evidence.controls, (Names{"Leave", ""}));
  EXPECT_TRUE(evidence.failedAttributes.empty());
  EXPECT_TRUE(evidence.deadline);
  EXPECT_FALSE(evidence.complete) << "an empty stack does not help a late walk";
}

TEST(LabelScanBounds, HasHalfASecond) {
  test::show(holding(part("AXWindow"), {part("AXButton", "Leave")}));
  test::slow("root", "AXRole", 0.4375);
  Evidence evidence = test::scanShown();
  EXPECT_TRUE(evidence.complete);
  EXPECT_FALSE(evidence.deadline);

  test::show(holding(part("AXWindow"), {part("AXButton", "Leave")}));
  test::slow("root", "AXChildren", 0.5);
  evidence = test::scanShown();
  EXPECT_EQ(evidence.nodes, 1) << "at exactly half a second no further element is taken";
  EXPECT_TRUE(evidence.deadline);
  EXPECT_FALSE(evidence.complete);
  EXPECT_FALSE(evidence.truncated);
}

TEST(LabelScanBounds, EndsNoLaterThanThePollDeadline) {
  test::show(holding(part("AXWindow"), {part("AXButton", "Leave")}));
  test::slow("root", "AXChildren", 0.125);
  const double now = scripted::desktop().uptime;
  const Evidence evidence = labels(scripted::element("root"), false, false, false, now + 0.125);
  EXPECT_EQ(evidence.nodes, 1);
  EXPECT_TRUE(evidence.deadline);
  EXPECT_FALSE(evidence.complete);
}

TEST(LabelScanBounds, APollDeadlineThatHasComeReadsNothing) {
  test::show(part("AXButton", "Leave"));
  const double now = scripted::desktop().uptime;
  const Evidence evidence = labels(scripted::element("root"), false, false, false, now);
  EXPECT_EQ(evidence.nodes, 0);
  EXPECT_TRUE(evidence.deadline);
  EXPECT_FALSE(evidence.complete);
  EXPECT_FALSE(evidence.truncated);
  EXPECT_FALSE(test::wasRead("root"));
}

TEST(LabelScanBounds, AFarPollDeadlineDoesNotGiveMoreThanHalfASecond) {
  test::show(holding(part("AXWindow"), {part("AXButton", "Leave")}));
  test::slow("root", "AXChildren", 0.5);
  const double now = scripted::desktop().uptime;
  EXPECT_TRUE(labels(scripted::element("root"), false, false, false, now + 10).deadline);
}

TEST(LabelScanBounds, StartsAfreshWithEveryScan) {
  test::show(failing(part("AXButton", "Leave"), "AXTitle", -25200));
  const Evidence first = test::scanShown();
  const Evidence second = test::scanShown();
  EXPECT_EQ(first.failedAttributes, second.failedAttributes);
  EXPECT_EQ(first.controls, second.controls);
  EXPECT_EQ(second.nodes, 1);
}

TEST(LabelScanBounds, NeverAsksForValueAndChildrenOfExcludedContent) {
  const Part chat = holding(test::with(part("AXGroup", "Meeting chat"), "AXValue", "secret"),
                            {part("AXButton", "Mute")});
  const Evidence evidence = test::scanLive(holding(part("AXWindow"), {chat}));
  EXPECT_EQ(test::readsOf("root/0"),
            (Names{"AXRole", "AXSubrole", "AXTitle", "AXHidden", "AXEnabled", "AXDescription"}));
  EXPECT_FALSE(test::wasRead("root/0/0"));
  EXPECT_EQ(evidence.nodes, 2);
  EXPECT_TRUE(evidence.complete) << "what is kept out on purpose is not missing";
}

TEST(LabelScanBounds, NeverVisitsTheChildrenOfHiddenElements) {
  const Part hidden = test::with(holding(part("AXGroup"), {part("AXButton")}), "AXHidden", true);
  const Evidence evidence = test::scanLive(holding(part("AXWindow"), {hidden}));
  EXPECT_FALSE(test::wasRead("root/0/0"));
  EXPECT_EQ(evidence.nodes, 2);
  EXPECT_TRUE(evidence.complete);
}

TEST(LabelScanBounds, TakesThePageForTheRootOfABrowsersScanAlone) {
  const Part page = holding(part("AXWebArea", "Chat"), {part("AXButton", "Leave")});
  EXPECT_EQ(test::scanLive(page, test::browser).nodes, 2);
  EXPECT_EQ(test::readsOf("root").back(), "AXChildren");
  EXPECT_EQ(test::scanLive(page, test::native).nodes, 1);
  EXPECT_EQ(test::readsOf("root").back(), "AXDescription");
}

TEST(LabelScanBounds, AsksForTheRoleDescriptionInANativeZoomWindowOnly) {
  const Part page = holding(part("AXWindow"), {part("AXGroup")});
  EXPECT_EQ(test::scanLive(page, test::native).nodes, 2);
  EXPECT_EQ(test::readsNamed("AXRoleDescription"), 0);
  EXPECT_EQ(test::scanLive(page, test::zoomWindow).nodes, 2);
  EXPECT_EQ(test::readsNamed("AXRoleDescription"), 2);
}

}  // namespace
}  // namespace callmonitor
