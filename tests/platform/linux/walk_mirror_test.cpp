#include "platform/linux/walk_mirror.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

ObjectName object(const std::string& path) {
  return {":1.5", path};
}

std::vector<ObjectName> objects(const std::vector<std::string>& paths) {
  std::vector<ObjectName> all;
  all.reserve(paths.size());
  for (const std::string& path : paths) all.push_back(object(path));
  return all;
}

std::vector<std::string> paths(const std::vector<ObjectName>& objects) {
  std::vector<std::string> all;
  all.reserve(objects.size());
  for (const ObjectName& each : objects) all.push_back(each.path);
  return all;
}

using Paths = std::vector<std::string>;
constexpr std::size_t many = 1000;

// A walk that has taken the root "r" and read that its children are a, b and c.
WalkMirror amongThree(int budget = 100) {
  WalkMirror mirror = beginWalk(object("r"), budget);
  EXPECT_EQ(follow(mirror, object("r"), false).step, Step::takes);
  descend(mirror, objects({"a", "b", "c"}));
  return mirror;
}

TEST(WalkMirror, KnowsOnlyTheRootWhenAWalkBegins) {
  EXPECT_EQ(paths(upcoming(beginWalk(object("r"), 100), many)), Paths{"r"});
}

TEST(WalkMirror, ExpectsTheLastChildFirst) {
  EXPECT_EQ(paths(upcoming(amongThree(), many)), (Paths{"c", "b", "a"}));
}

TEST(WalkMirror, ExpectsTheChildrenOfAnElementBeforeWhatWasKnownEarlier) {
  WalkMirror mirror = amongThree();
  EXPECT_EQ(follow(mirror, object("c"), false).step, Step::takes);
  descend(mirror, objects({"c1", "c2"}));
  EXPECT_EQ(paths(upcoming(mirror, many)), (Paths{"c2", "c1", "b", "a"}));
}

TEST(WalkMirror, ExpectsTheNextSiblingAfterAnElementWhoseChildrenWereNotRead) {
  WalkMirror mirror = amongThree();
  EXPECT_EQ(follow(mirror, object("c"), false).step, Step::takes);
  EXPECT_EQ(paths(upcoming(mirror, many)), (Paths{"b", "a"}));
}

TEST(WalkMirror, GivesNoMoreThanItIsAskedFor) {
  EXPECT_EQ(paths(upcoming(amongThree(), 2)), (Paths{"c", "b"}));
}

TEST(WalkMirror, StaysWithAnElementWhileItsAttributesAreRead) {
  WalkMirror mirror = amongThree();
  EXPECT_EQ(follow(mirror, object("c"), false).step, Step::takes);
  EXPECT_EQ(follow(mirror, object("c"), false).step, Step::stays);
  EXPECT_EQ(follow(mirror, object("c"), true).step, Step::stays) << "an attribute once more";
  EXPECT_EQ(paths(upcoming(mirror, many)), (Paths{"b", "a"}));
}

TEST(WalkMirror, TellsWhatAWalkPassedOver) {
  WalkMirror mirror = amongThree();
  const Followed followed = follow(mirror, object("a"), false);
  EXPECT_EQ(followed.step, Step::takes);
  EXPECT_EQ(paths(followed.skipped), (Paths{"b", "c"}));
  EXPECT_EQ(followed.left, object("r"));
  EXPECT_TRUE(upcoming(mirror, many).empty());
}

TEST(WalkMirror, DoesNotKnowElementsThatAreNotOnTheStack) {
  WalkMirror mirror = amongThree();
  EXPECT_EQ(follow(mirror, object("elsewhere"), false).step, Step::strange);
  EXPECT_EQ(follow(mirror, {":1.6", "c"}, false).step, Step::strange) << "of another application";
  EXPECT_EQ(follow(mirror, object("c"), false).step, Step::takes);
  EXPECT_EQ(follow(mirror, object("b"), false).step, Step::takes);
  EXPECT_EQ(follow(mirror, object("c"), false).step, Step::strange) << "taken before";
}

TEST(WalkMirror, TakesAnElementAgainThatIsListedTwice) {
  WalkMirror mirror = beginWalk(object("r"), 100);
  EXPECT_EQ(follow(mirror, object("r"), false).step, Step::takes);
  descend(mirror, objects({"a", "a"}));
  EXPECT_EQ(follow(mirror, object("a"), false).step, Step::takes);
  EXPECT_EQ(follow(mirror, object("a"), false).step, Step::stays);
  EXPECT_EQ(follow(mirror, object("a"), true).step, Step::takes);
  EXPECT_TRUE(upcoming(mirror, many).empty());
}

TEST(WalkMirror, ReplacesChildrenThatAreReadOnceMore) {
  WalkMirror mirror = amongThree();
  descend(mirror, objects({"d"}));
  EXPECT_EQ(paths(upcoming(mirror, many)), Paths{"d"});
}

TEST(WalkMirror, KeepsAsManyChildrenAsAWalkTakesOfOneElement) {
  WalkMirror mirror = beginWalk(object("r"), 1000);
  EXPECT_EQ(follow(mirror, object("r"), false).step, Step::takes);
  std::vector<ObjectName> children;
  for (std::size_t i = 0; i <= walkChildCap; ++i) children.push_back(object(std::to_string(i)));
  descend(mirror, children);
  const auto next = upcoming(mirror, many);
  EXPECT_EQ(next.size(), walkChildCap);
  EXPECT_EQ(next.front().path, std::to_string(walkChildCap - 1)) << "the last of the first ones";
}

TEST(WalkMirror, ExpectsNothingBeyondTheBudget) {
  WalkMirror mirror = amongThree(/*budget=*/2);
  EXPECT_EQ(paths(upcoming(mirror, many)), Paths{"c"});
  EXPECT_EQ(follow(mirror, object("c"), false).step, Step::takes);
  EXPECT_TRUE(upcoming(mirror, many).empty());
  EXPECT_EQ(follow(mirror, object("b"), false).step, Step::strange);
}

}  // namespace
}  // namespace callmonitor::platform
