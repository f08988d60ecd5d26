// The search for pages under a window: what it finds, in which order, and where it stops.
#include "evidence/web_areas.h"

#include <gtest/gtest.h>

#include "support/synthetic_page.h"

namespace callmonitor {
namespace {

using test::crowded;
using test::failing;
using test::holding;
using test::named;
using test::part;
using test::Part;
using test::with;
using Names = std::vector<std::string>;

constexpr double never = 1e9;

struct Found {
  Names keys;
  bool complete = false;
  friend bool operator==(const Found&, const Found&) = default;
};

// The search over live elements of this page.
Found foundLive(const Part& window, double pollDeadline = never) {
  test::show(window);
  const WebAreas<Element> areas = webAreas(scripted::element("root"), pollDeadline);
  Found found{{}, areas.complete};
  for (const Element& root : areas.roots) {
    for (const auto& [key, attributes] : scripted::desktop().elements) {
      if (scripted::element(key) == root) found.keys.push_back(key);
    }
  }
  return found;
}

// The same search over plain data.
Found foundInData(const Part& window) {
  const SyntheticTree tree = test::treeOf(window);
  const WebAreas<NodeKey> areas = searchWebAreas(
      NodeKey{"root"}, [] { return true; },
      [&](const NodeKey& node, std::string_view name) { return readSynthetic(tree, node, name); });
  Found found{{}, areas.complete};
  for (const NodeKey& root : areas.roots) found.keys.push_back(root.key);
  return found;
}

Part page(std::string name) {
  return named(part("AXWebArea"), std::move(name));
}

struct SearchCase {
  std::string_view sentence;
  Part window;
  Found found;
};

TEST(WebAreas, AreFoundInTheVisibleTree) {
  const SearchCase cases[] = {
      {"a root that is a page is the one page", part("AXWebArea"), {{"root"}, true}},
      {"a page below groups",
       holding(part("AXWindow"), {holding(part("AXGroup"), {page("deep")})}),
       {{"deep"}, true}},
      {"the page of the later branch comes first",
       holding(part("AXWindow"), {holding(part("AXGroup"), {page("early")}),
                                  holding(part("AXGroup"), {page("late")})}),
       {{"late", "early"}, true}},
      {"a later branch is searched to its end first",
       holding(part("AXWindow"),
               {page("first"), holding(part("AXGroup"), {page("second"), page("third")})}),
       {{"third", "second", "first"}, true}},
      {"a page is not searched inside",
       holding(part("AXWindow"), {holding(page("outer"), {page("inner")})}),
       {{"outer"}, true}},
      {"a hidden subtree is passed over",
       holding(part("AXWindow"),
               {with(holding(part("AXGroup"), {page("page")}), "AXHidden", true)}),
       {{}, true}},
      {"a hidden page is passed over",
       holding(part("AXWindow"), {with(page("page"), "AXHidden", true)}),
       {{}, true}},
      {"a Boolean false hides nothing",
       holding(part("AXWindow"), {with(page("page"), "AXHidden", false)}),
       {{"page"}, true}},
      {"another type hides nothing",
       holding(part("AXWindow"), {with(page("page"), "AXHidden", "true")}),
       {{"page"}, true}},
      {"a failed answer hides nothing",
       holding(part("AXWindow"), {failing(page("page"), "AXHidden", -25200)}),
       {{"page"}, true}},
      {"an element whose role fails is passed over with its subtree",
       holding(part("AXWindow"),
               {failing(holding(part("AXGroup"), {page("page")}), "AXRole", -25200)}),
       {{}, true}},
      {"an element without a role is passed over with its subtree",
       holding(part("AXWindow"), {holding(part(""), {page("page")})}),
       {{}, true}},
      {"children that cannot be read leave the search complete",
       failing(part("AXWindow"), "AXChildren", -25200),
       {{}, true}},
      {"a role is compared exactly",
       holding(part("AXWindow"), {part("AXWebAreas"), part("axwebarea")}),
       {{}, true}},
      {"a window without pages", part("AXWindow"), {{}, true}},
  };
  for (const SearchCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(foundLive(row.window).keys, row.found.keys);
    EXPECT_EQ(foundLive(row.window).complete, row.found.complete);
    EXPECT_EQ(foundInData(row.window).keys, row.found.keys);
    EXPECT_EQ(foundInData(row.window).complete, row.found.complete);
  }
}

TEST(WebAreas, AskForHiddenThenRoleThenChildren) {
  foundLive(holding(part("AXWindow"), {page("page"), with(part("AXGroup"), "AXHidden", true)}));
  EXPECT_EQ(test::readsOf("root"), (Names{"AXHidden", "AXRole", "AXChildren"}));
  EXPECT_EQ(test::readsOf("page"), (Names{"AXHidden", "AXRole"})) << "a page is not descended into";
  EXPECT_EQ(test::readsOf("root/1"), Names{"AXHidden"}) << "a hidden element is asked no more";
}

TEST(WebAreas, AreSearchedAmongTheFirst100ChildrenOnly) {
  Part full = crowded(100);
  full.children[99] = page("last");
  EXPECT_EQ(foundLive(full), (Found{{"last"}, true}));

  Part overfull = crowded(101);
  overfull.children[0] = page("first");
  overfull.children[99] = page("last");
  overfull.children[100] = page("beyond");
  EXPECT_EQ(foundLive(overfull), (Found{{"last", "first"}, false}));
  EXPECT_FALSE(test::wasRead("beyond"));

  EXPECT_EQ(foundLive(crowded(150)), (Found{{}, false}));
  EXPECT_TRUE(test::wasRead("root/99"));
  EXPECT_FALSE(test::wasRead("root/100"));
  EXPECT_EQ(foundInData(overfull), (Found{{"last", "first"}, false}));
}

TEST(WebAreas, AreSearchedAmong1200Elements) {
  EXPECT_TRUE(foundLive(test::treeOfSize(1200)).complete);
  EXPECT_EQ(test::readsNamed("AXHidden"), 1200);

  EXPECT_FALSE(foundLive(test::treeOfSize(1201)).complete);
  EXPECT_EQ(test::readsNamed("AXHidden"), 1200);
}

TEST(WebAreas, OfASearchThatWasCutShortAreStillGiven) {
  Part window = test::treeOfSize(1300);
  window.children.push_back(page("seen"));
  window.children.insert(window.children.begin(), page("unseen"));
  EXPECT_EQ(foundLive(window), (Found{{"seen"}, false}));
}

TEST(WebAreas, AreSearchedForHalfASecond) {
  const Part window = holding(part("AXWindow"), {page("early"), page("late")});
  test::show(window);
  test::slow("root", "AXHidden", 0.25);
  test::slow("late", "AXHidden", 0.125);
  EXPECT_TRUE(webAreas(scripted::element("root"), never).complete) << "0.375 seconds are enough";

  test::show(window);
  test::slow("root", "AXHidden", 0.25);
  test::slow("late", "AXHidden", 0.25);
  const WebAreas<Element> areas = webAreas(scripted::element("root"), never);
  EXPECT_EQ(areas.roots.size(), 1U) << "at exactly half a second no further element is taken";
  EXPECT_FALSE(areas.complete);
  EXPECT_FALSE(test::wasRead("early"));
}

TEST(WebAreas, AreNotCompleteWhenTheLastAnswerPassesTheDeadline) {
  test::show(part("AXWebArea"));
  test::slow("root", "AXRole", 0.5);
  const WebAreas<Element> areas = webAreas(scripted::element("root"), never);
  EXPECT_EQ(areas.roots.size(), 1U);
  EXPECT_FALSE(areas.complete);
}

TEST(WebAreas, AreSearchedNoLaterThanThePollDeadline) {
  const Part window = holding(part("AXWindow"), {page("early"), page("late")});
  test::show(window);
  test::slow("root", "AXHidden", 0.125);
  const double now = scripted::desktop().uptime;
  const WebAreas<Element> areas = webAreas(scripted::element("root"), now + 0.125);
  EXPECT_TRUE(areas.roots.empty());
  EXPECT_FALSE(areas.complete);

  EXPECT_FALSE(foundLive(window, now).complete) << "a deadline that has come takes nothing";
  EXPECT_EQ(test::readsNamed("AXHidden"), 0);
}

}  // namespace
}  // namespace callmonitor
