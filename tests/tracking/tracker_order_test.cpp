// Several calls at once: the order in which they are told, and which of them gets which view.
#include <gtest/gtest.h>

#include "platform/scripted/desktop.h"
#include "support/tracker_samples.h"
#include "tracking/tracker.h"

namespace callmonitor {
namespace {

using namespace support;

struct SeveralCalls : testing::Test {
  SeveralCalls() { scripted::reset(); }
  Tracker tracker;

  // Each observation as state and call key, in order.
  std::vector<std::string> apply(const std::vector<AppSample>& samples, bool trusted = true) {
    std::vector<std::string> words;
    for (const Observation& observation : tracker.apply(samples, trusted)) {
      words.push_back(std::string(stateWord(observation.state)) + " " +
                      observation.call.conference.key);
    }
    return words;
  }
};

Surface meeting(const std::string& name, CallState state = CallState::joined,
                const std::string& element = "") {
  return {"window", element.empty() ? name : element, {"meet", "meet:" + name}, state, "", false};
}

TEST_F(SeveralCalls, NewCallsAreToldInScanOrderAndTrackedOnesByAscendingKey) {
  const AppSample sample = browserSample({meeting("c"), meeting("a"), meeting("b")});
  EXPECT_EQ(apply({sample}), (Told{"joined meet:c", "joined meet:a", "joined meet:b"}));
  EXPECT_EQ(apply({sample}), (Told{"joined meet:a", "joined meet:b", "joined meet:c"}));
  EXPECT_EQ(apply({}, /*trusted=*/false),
            (Told{"unknown meet:a", "unknown meet:b", "unknown meet:c"}));
  EXPECT_EQ(apply({}), (Told{"left meet:a", "left meet:b", "left meet:c"}));
}

TEST_F(SeveralCalls, CallsOfVanishedProcessesComeFirstThenEachSampleInTurn) {
  apply({browserSample({meeting("b")}, 1), browserSample({meeting("a")}, 2),
         browserSample({meeting("z")}, 3)});
  // Process 3 has quit; 2 is sampled before 1, and each opens one more call.
  EXPECT_EQ(
      apply({browserSample({meeting("y"), meeting("a")}, 2),
             browserSample({meeting("x"), meeting("b")}, 1)}),
      (Told{"left meet:z", "joined meet:a", "joined meet:y", "joined meet:b", "joined meet:x"}));
}

TEST_F(SeveralCalls, ACallIsLookedForInItsOwnProcessOnly) {
  apply({browserSample({meeting("a")}, 1)});
  EXPECT_EQ(apply({browserSample({}, 1), browserSample({meeting("a")}, 2)}),
            (Told{"unknown meet:a"}))
      << "the same meeting in another application is not the call's view";
}

TEST_F(SeveralCalls, AViewThatOneCallTookIsNotTakenByAnother) {
  const auto native = [](const std::string& window) {
    return zoomSurface(CallState::joined, window);
  };
  const auto opened = tracker.apply({nativeSample({native("one"), native("two")})}, true);
  ASSERT_EQ(opened.size(), 2U);
  // Both calls could take the one view in window "one", each by a rule of its own.
  Call& second = tracker.calls.at(opened[1].call.conference.key);
  second.window = "one";
  const auto next = tracker.apply({nativeSample({native("one")})}, true);
  ASSERT_EQ(next.size(), 2U);
  EXPECT_EQ(next[0].call.id, opened[0].call.id);
  EXPECT_EQ(next[0].state, CallState::joined) << "the first in order of key takes it";
  EXPECT_EQ(next[1].call.id, opened[1].call.id);
  EXPECT_EQ(next[1].state, CallState::unknown);
}

TEST_F(SeveralCalls, ATakenViewOpensNoFurtherCall) {
  const AppSample sample = nativeSample({zoomSurface()});
  EXPECT_EQ(apply({sample}).size(), 1U);
  EXPECT_EQ(apply({sample}).size(), 1U);
  EXPECT_EQ(tracker.calls.size(), 1U);
}

TEST_F(SeveralCalls, ANativeViewThatNoCallTookOpensOneOfItsOwn) {
  // The client recreated the window: the old call is judged by its absence.
  apply({nativeSample({zoomSurface(CallState::joined, "old")})});
  EXPECT_EQ(told(tracker.apply({nativeSample({zoomSurface(CallState::joined, "new")})}, true)),
            (Told{"unknown 2", "joined 1"}));
}

// One meeting shown twice.

TEST_F(SeveralCalls, ASecondViewOfAMeetingInTheSameApplicationIsNoSecondCall) {
  const AppSample twice = browserSample(
      {meeting("a", CallState::joined, "one"), meeting("a", CallState::joined, "two")});
  EXPECT_EQ(apply({twice}), Told{"joined meet:a"});
  EXPECT_EQ(tracker.calls.at("meet:a").element, "one");
  EXPECT_EQ(apply({twice}), Told{"joined meet:a"});
  EXPECT_EQ(tracker.calls.at("meet:a").element, "one");
}

TEST_F(SeveralCalls, ASecondViewOfAMeetingInAnotherApplicationIsNoSecondCall) {
  const AppSample first = browserSample({meeting("a")}, 1);
  const AppSample second = browserSample({meeting("a")}, 2);
  EXPECT_EQ(apply({first, second}), Told{"joined meet:a"});
  EXPECT_EQ(apply({second, first}), Told{"joined meet:a"});
  EXPECT_EQ(tracker.calls.at("meet:a").pid, 1);
  EXPECT_EQ(apply({second}), (Told{"left meet:a", "joined meet:a"}))
      << "with the first process gone the second view is a session of its own";
  EXPECT_EQ(tracker.calls.at("meet:a").pid, 2);
}

// The view of a call closed for certain, while the meeting is joined in another window.
AppSample closedView(const std::vector<Surface>& others = {}) {
  AppSample sample = browserSample(others, 1);
  sample.windows->insert("window");
  sample.closedViews = {"view"};
  return sample;
}
Surface otherView(CallState state = CallState::joined) {
  return {"other window", "other view", {"meet", "meet:a"}, state, "", false};
}

struct ReplacedView : SeveralCalls {
  std::string session;
  ReplacedView() {
    session = tracker.apply({browserSample({meeting("a", CallState::joined, "view")}, 1)}, true)
                  .front()
                  .call.id;
  }
  void expectNewSession(const std::vector<Observation>& observations) {
    ASSERT_EQ(told(observations), (Told{"left 2", "joined 1"}));
    EXPECT_EQ(observations[0].call.id, session);
    EXPECT_NE(observations[1].call.id, session);
    EXPECT_EQ(observations[1].call.conference.key, "meet:a");
  }
};

TEST_F(ReplacedView, AJoinedViewInTheSameApplicationOpensANewSessionInTheSameTick) {
  expectNewSession(tracker.apply({closedView({otherView()})}, true));
}

TEST_F(ReplacedView, AJoinedViewInALaterApplicationOpensANewSessionInTheSameTick) {
  expectNewSession(tracker.apply({closedView(), browserSample({otherView()}, 2)}, true));
}

TEST_F(ReplacedView, AJoinedViewInAnEarlierApplicationOpensANewSessionInTheNextTick) {
  const AppSample earlier = browserSample({otherView()}, 2);
  EXPECT_EQ(told(tracker.apply({earlier, closedView()}, true)), Told{"left 2"});
  EXPECT_EQ(told(tracker.apply({earlier, closedView()}, true)), Told{"joined 1"});
}

TEST_F(ReplacedView, ANativeClientsJoinedViewThatCarriesTheKeyCounts) {
  const AppSample native = nativeSample({otherView()}, 3);
  EXPECT_EQ(told(tracker.apply({closedView(), native}, true)), (Told{"left 2", "joined 1"}));
}

TEST_F(ReplacedView, TheCallGoesOnUnlessItsViewIsGoneForCertain) {
  struct Row {
    const char* sentence;
    std::vector<AppSample> samples;
    Told told;
  };
  AppSample live = closedView({otherView()});
  live.closedViews.clear();
  AppSample cut = closedView({otherView()});
  cut.viewInventoryComplete = false;
  const std::vector<Row> rows{
      {"its view is not known to be closed", {live}, {"unknown 2"}},
      {"the inventory of views is incomplete", {cut}, {"unknown 2"}},
      {"the application was not read",
       {unread(closedView()), browserSample({otherView()}, 2)},
       {"unknown 2"}},
      {"the other view is not joined",
       {closedView({otherView(CallState::unknown)})},
       {"unknown 2"}},
      {"the other view says left", {closedView({otherView(CallState::left)})}, {"unknown 2"}},
      {"the other view shows another meeting",
       {closedView({meeting("b")})},
       {"unknown 2", "joined 1"}},
      {"a joined view in the same window replaced the old one",
       {closedView({meeting("a", CallState::joined, "new view")})},
       {"joined 2"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    Tracker copy = tracker;
    EXPECT_EQ(told(copy.apply(row.samples, true)), row.told);
  }
}

TEST_F(ReplacedView, AViewThatSaysLeftEndsTheCallAndAnotherJoinedViewIsANewSession) {
  expectNewSession(tracker.apply(
      {browserSample({otherView(), meeting("a", CallState::left, "view")}, 1)}, true));
}

TEST_F(ReplacedView, ATabThatMovedToAnotherWindowKeepsItsSession) {
  AppSample moved = closedView({otherView()});
  moved.windows->erase("window");
  const auto observations = tracker.apply({moved}, true);
  ASSERT_EQ(told(observations), Told{"joined 2"});
  EXPECT_EQ(observations[0].call.id, session);
}

}  // namespace
}  // namespace callmonitor
