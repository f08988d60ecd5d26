// How calls open, go on and end.
#include "tracking/tracker.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/scripted/desktop.h"
#include "support/tracker_samples.h"

namespace callmonitor {
namespace {

using namespace support;

struct Tracking : testing::Test {
  Tracking() { scripted::reset(); }
  Tracker tracker;

  Told apply(const std::vector<AppSample>& samples, bool trusted = true) {
    return told(tracker.apply(samples, trusted));
  }
};

// A native call whose window is gone for certain: an absence that counts.
AppSample nativeAbsence() {
  AppSample sample = nativeSample();
  sample.closedWindows = {"window"};
  return sample;
}

TEST_F(Tracking, AFreshTrackerHoldsNoCallAndSaysNothing) {
  EXPECT_TRUE(tracker.calls.empty());
  EXPECT_EQ(apply({}), Told{});
  EXPECT_EQ(apply({}, /*trusted=*/false), Told{});
}

TEST_F(Tracking, OnlyAJoinedSurfaceOpensACall) {
  EXPECT_EQ(apply({browserSample({meetSurface(CallState::unknown)})}), Told{});
  EXPECT_EQ(apply({browserSample({meetSurface(CallState::left)})}), Told{});
  EXPECT_TRUE(tracker.calls.empty());
  EXPECT_EQ(apply({browserSample({meetSurface(CallState::joined)})}), Told{"joined 1"});
}

TEST_F(Tracking, ANewBrowserCallTakesEverythingFromSampleAndSurface) {
  AppSample sample = browserSample({{"w1", "e1", meetMeeting, CallState::joined, "Title", true}});
  sample.launchedAt = 12.25;
  sample.applicationBundleID = "com.google.Chrome";
  const std::vector<Observation> observations = tracker.apply({sample}, true);
  ASSERT_EQ(observations.size(), 1U);
  ASSERT_TRUE(tracker.calls.contains("meet:abc-defg-hij"));
  EXPECT_EQ(observations[0].state, CallState::joined);
  for (const Call& call : {observations[0].call, tracker.calls.at("meet:abc-defg-hij")}) {
    EXPECT_EQ(call.id, "00000000-0000-4000-8000-000000000001");
    EXPECT_EQ(call.pid, 7);
    EXPECT_EQ(call.launchedAt, 12.25);
    EXPECT_TRUE(call.browser);
    EXPECT_EQ(call.conference, meetMeeting);
    EXPECT_EQ(call.window, "w1");
    EXPECT_EQ(call.element, "e1");
    EXPECT_EQ(call.sequence, 1);
    EXPECT_EQ(call.missing, 0);
    EXPECT_FALSE(call.heardClientAudio);
    EXPECT_EQ(call.applicationBundleID, "com.google.Chrome");
    EXPECT_EQ(call.title, "Title");
    EXPECT_TRUE(call.mediaActive);
  }
}

TEST_F(Tracking, ANativeCallIsKeyedByItsSessionEvenWhereTheClientShowsAMeeting) {
  for (const char* shownKey : {"", "zoom:1234567890"}) {
    SCOPED_TRACE(shownKey);
    Tracker fresh;
    Surface surface = zoomSurface();
    surface.conference.key = shownKey;
    const std::vector<Observation> observations = fresh.apply({nativeSample({surface})}, true);
    ASSERT_EQ(observations.size(), 1U);
    const Call& call = observations[0].call;
    EXPECT_FALSE(call.browser);
    EXPECT_EQ(call.conference, (Conference{"zoom", "zoom:native-" + call.id}));
    EXPECT_TRUE(fresh.calls.contains(call.conference.key));
  }
}

TEST_F(Tracking, AGenericClientsCallIsKeyedByItsSession) {
  const auto observations = tracker.apply(
      {nativeSample({{"call", "call", {"application", ""}, CallState::joined, "Call", false}})},
      true);
  ASSERT_EQ(observations.size(), 1U);
  EXPECT_EQ(observations[0].call.conference.key, "application:native-" + observations[0].call.id);
}

TEST_F(Tracking, AWebAppsCallIsABrowserCall) {
  AppSample sample = browserSample({meetSurface()});
  sample.standalone = true;
  apply({sample});
  ASSERT_TRUE(tracker.calls.contains(meetMeeting.key));
  EXPECT_TRUE(tracker.calls.at(meetMeeting.key).browser);
}

TEST_F(Tracking, TwoJoinedSurfacesOfANativeClientAreTwoCalls) {
  const AppSample sample =
      nativeSample({zoomSurface(CallState::joined, "one"), zoomSurface(CallState::joined, "two")});
  const std::vector<Observation> observations = tracker.apply({sample}, true);
  ASSERT_EQ(observations.size(), 2U);
  EXPECT_NE(observations[0].call.id, observations[1].call.id);
  for (const Observation& observation : observations) {
    EXPECT_EQ(observation.call.conference.key, "zoom:native-" + observation.call.id);
    EXPECT_EQ(observation.call.sequence, 1);
  }
  EXPECT_EQ(tracker.calls.size(), 2U);
  EXPECT_EQ(apply({sample}), (Told{"joined 2", "joined 2"})) << "each is found again";
}

TEST_F(Tracking, AudioIsRememberedFromTheTickThatOpensTheCall) {
  struct Row {
    std::optional<ClientAudio> audio;
    bool heard;
  };
  for (const Row& row : std::vector<Row>{{std::nullopt, false},
                                         {silence, false},
                                         {ClientAudio{true, false}, true},
                                         {ClientAudio{false, true}, true}}) {
    Tracker fresh;
    AppSample sample = browserSample({meetSurface()});
    sample.audio = row.audio;
    ASSERT_EQ(fresh.apply({sample}, true).size(), 1U);
    EXPECT_EQ(fresh.calls.begin()->second.heardClientAudio, row.heard);
  }
}

TEST_F(Tracking, AudioOnceHeardIsRememberedForTheWholeCall) {
  const auto heard = [&] { return tracker.calls.begin()->second.heardClientAudio; };
  AppSample sample = browserSample({meetSurface()});
  apply({sample});
  sample.audio = silence;
  apply({sample});
  EXPECT_FALSE(heard());
  sample.audio = ClientAudio{false, true};
  apply({unread(sample)});
  EXPECT_FALSE(heard()) << "a call whose application was not read is not judged at all";
  apply({sample});
  EXPECT_TRUE(heard());
  sample.audio = silence;
  apply({sample});
  sample.audio.reset();
  apply({sample});
  EXPECT_TRUE(heard());
}

TEST_F(Tracking, AudioIsHeardInATickInWhichTheSurfaceIsAbsent) {
  apply({browserSample({meetSurface()})});
  AppSample absent = browserSample();
  absent.audio = ClientAudio{true, false};
  apply({absent});
  EXPECT_TRUE(tracker.calls.begin()->second.heardClientAudio);
}

TEST_F(Tracking, AJoinedCallIsToldInEveryTickWithTheNextSequence) {
  const AppSample sample = browserSample({meetSurface()});
  EXPECT_EQ(apply({sample}), Told{"joined 1"});
  EXPECT_EQ(apply({sample}), Told{"joined 2"});
  EXPECT_EQ(apply({sample}), Told{"joined 3"});
}

TEST_F(Tracking, ATakenSurfaceTellsItsOwnState) {
  apply({browserSample({meetSurface()})});
  EXPECT_EQ(apply({browserSample({meetSurface(CallState::unknown)})}), Told{"unknown 2"});
  EXPECT_EQ(apply({browserSample({meetSurface(CallState::joined)})}), Told{"joined 3"});
  EXPECT_EQ(apply({browserSample({meetSurface(CallState::left)})}), Told{"left 4"});
  EXPECT_TRUE(tracker.calls.empty());
}

TEST_F(Tracking, ATakenSurfaceMovesTheCallToItsWindowElementTitleAndMedia) {
  apply({browserSample({{"w1", "e1", meetMeeting, CallState::joined, "Before", false}})});
  const auto observations = tracker.apply(
      {browserSample({{"w2", "e2", meetMeeting, CallState::joined, "After", true}})}, true);
  ASSERT_EQ(observations.size(), 1U);
  for (const Call& call : {observations[0].call, tracker.calls.at(meetMeeting.key)}) {
    EXPECT_EQ(call.window, "w2");
    EXPECT_EQ(call.element, "e2");
    EXPECT_EQ(call.title, "After");
    EXPECT_TRUE(call.mediaActive);
    EXPECT_EQ(call.sequence, 2);
    EXPECT_EQ(call.id, "00000000-0000-4000-8000-000000000001");
  }
}

TEST_F(Tracking, ACallThatLeftAndJoinsAgainIsANewSession) {
  const auto first = tracker.apply({browserSample({meetSurface()})}, true);
  apply({browserSample({meetSurface(CallState::left)})});
  EXPECT_EQ(apply({browserSample({meetSurface(CallState::left)})}), Told{}) << "left once only";
  const auto again = tracker.apply({browserSample({meetSurface()})}, true);
  ASSERT_EQ(again.size(), 1U);
  EXPECT_EQ(again[0].call.sequence, 1);
  EXPECT_NE(again[0].call.id, first[0].call.id);
}

TEST_F(Tracking, ANativeCallStaysOneSessionWhileItsClientShowsAndHidesTheMeetingsNumber) {
  const auto tick = [&](const std::string& key, CallState state) {
    Surface surface = zoomSurface(state);
    surface.conference.key = key;
    return tracker.apply({nativeSample({surface})}, true);
  };
  const auto first = tick("", CallState::joined);
  const auto second = tick("zoom:1234567890", CallState::joined);
  const auto third = tick("", CallState::joined);
  const auto fourth = tick("zoom:1234567890", CallState::left);
  EXPECT_EQ(told(first), Told{"joined 1"});
  EXPECT_EQ(told(second), Told{"joined 2"});
  EXPECT_EQ(told(third), Told{"joined 3"});
  ASSERT_EQ(told(fourth), Told{"left 4"});
  EXPECT_EQ(fourth[0].call.id, first[0].call.id);
  EXPECT_EQ(fourth[0].call.conference.key, first[0].call.conference.key);
}

TEST_F(Tracking, ACallWhoseProcessQuitLeavesInTheNextTrustedTick) {
  apply({browserSample({meetSurface()})});
  EXPECT_EQ(apply({}, /*trusted=*/false), Told{"unknown 2"});
  EXPECT_EQ(apply({}), Told{"left 3"});
  EXPECT_TRUE(tracker.calls.empty());
  EXPECT_EQ(apply({}), Told{});
}

TEST_F(Tracking, AnotherLaunchUnderTheSameProcessIdentifierIsAnotherProcess) {
  for (const double relaunched : {2.0, std::nextafter(1.0, 2.0)}) {
    Tracker fresh;
    const auto first = fresh.apply({browserSample({meetSurface()})}, true);
    AppSample other = browserSample({meetSurface()});
    other.launchedAt = relaunched;
    const auto second = fresh.apply({other}, true);
    ASSERT_EQ(told(second), (Told{"left 2", "joined 1"}));
    EXPECT_EQ(second[0].call.id, first[0].call.id);
    EXPECT_NE(second[1].call.id, first[0].call.id);
    EXPECT_EQ(second[1].call.launchedAt, relaunched);
  }
}

TEST_F(Tracking, AnUntrustedTickKeepsEveryCallAndOpensNone) {
  apply({browserSample({meetSurface()}), nativeSample({zoomSurface()})});
  const AppSample third =
      browserSample({{"w", "e", {"meet", "meet:xxx-yyyy-zzz"}, CallState::joined, "", false}}, 8);
  EXPECT_EQ(apply({third}, /*trusted=*/false), (Told{"unknown 2", "unknown 2"}));
  EXPECT_EQ(tracker.calls.size(), 2U);
  EXPECT_EQ(apply({browserSample({meetSurface()}), nativeSample({zoomSurface()})}),
            (Told{"joined 3", "joined 3"}))
      << "calls go on when trust returns";
}

TEST_F(Tracking, ACallEndsOnTheSecondCountedAbsence) {
  EXPECT_EQ(missingThreshold, 2);
  apply({nativeSample({zoomSurface()})});
  EXPECT_EQ(apply({nativeAbsence()}), Told{"unknown 2"});
  EXPECT_EQ(apply({nativeAbsence()}), Told{"left 3"});
  EXPECT_TRUE(tracker.calls.empty());
}

TEST_F(Tracking, OnlyConsecutiveAbsencesEndACall) {
  struct Row {
    const char* sentence;
    std::vector<AppSample> between;
    bool trusted;
    Told last;  // of the counted absence that follows
  };
  AppSample speakingAbsence = nativeAbsence();
  speakingAbsence.audio = speaking;
  const std::vector<Row> rows{
      {"an absence that does not count starts the count afresh",
       {nativeSample()},
       true,
       {"unknown 4"}},
      {"audio starts the count afresh", {speakingAbsence}, true, {"unknown 4"}},
      {"a surface that is found again starts the count afresh",
       {nativeSample({zoomSurface(CallState::unknown)})},
       true,
       {"unknown 4"}},
      {"a tick without trust starts the count afresh", {}, false, {"unknown 4"}},
      {"a tick without window inventory leaves the count as it was",
       {unread(nativeAbsence())},
       true,
       {"left 4"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    Tracker fresh;
    fresh.apply({nativeSample({zoomSurface()})}, true);
    EXPECT_EQ(told(fresh.apply({nativeAbsence()}, true)), Told{"unknown 2"});
    EXPECT_EQ(fresh.calls.begin()->second.missing, 1);
    fresh.apply(row.between, row.trusted);
    EXPECT_EQ(told(fresh.apply({nativeAbsence()}, true)), row.last);
  }
}

TEST_F(Tracking, AudioThatIsNotKnownStartsABrowsersCountAfresh) {
  AppSample inCall = browserSample({meetSurface()});
  inCall.audio = speaking;
  apply({inCall});
  AppSample gone = browserSample();
  gone.windows = {"window"};
  gone.closedViews = {"element"};
  gone.audio = silence;
  AppSample unheard = gone;
  unheard.audio.reset();
  EXPECT_EQ(apply({gone}), Told{"unknown 2"});
  EXPECT_EQ(apply({unheard}), Told{"unknown 3"});
  EXPECT_EQ(apply({gone}), Told{"unknown 4"});
  EXPECT_EQ(apply({gone}), Told{"left 5"});
}

TEST_F(Tracking, ACallWhoseApplicationWasNotReadIsUnknownHoweverLong) {
  apply({nativeSample({zoomSurface()})});
  for (int sequence = 2; sequence < 12; ++sequence) {
    EXPECT_EQ(apply({unread(nativeAbsence())}), Told{"unknown " + std::to_string(sequence)});
  }
}

TEST_F(Tracking, ABrowserCallThatWasNeverHeardIsNotEndedByAbsence) {
  apply({browserSample({meetSurface()})});
  AppSample gone = browserSample();
  gone.windows = {"another window"};
  gone.closedViews = {"element"};
  gone.closedWindows = {"window"};
  gone.audio = silence;
  for (int tick = 0; tick < 10; ++tick) ASSERT_EQ(tracker.apply({gone}, true).size(), 1U);
  EXPECT_EQ(tracker.calls.size(), 1U);
  EXPECT_EQ(apply({}), Told{"left 12"}) << "its process quits";
}

TEST_F(Tracking, ABrowserCallThatWasHeardEndsOnTheSecondTickOfSilenceAfterItsPageClosed) {
  AppSample inCall = browserSample({meetSurface()});
  inCall.audio = speaking;
  apply({inCall});
  AppSample gone = browserSample();
  gone.windows = {"window"};
  gone.closedViews = {"element"};
  gone.audio = silence;
  EXPECT_EQ(apply({gone}), Told{"unknown 2"});
  EXPECT_EQ(apply({gone}), Told{"left 3"});
}

TEST_F(Tracking, AWebAppWithoutKnowledgeOfAudioEndsWithItsWindow) {
  AppSample inCall = browserSample({meetSurface()});
  inCall.standalone = true;
  apply({inCall});
  AppSample gone = browserSample();
  gone.standalone = true;
  gone.windows = {"another window"};
  gone.closedWindows = {"window"};
  EXPECT_EQ(apply({gone}), Told{"unknown 2"});
  EXPECT_EQ(apply({gone}), Told{"left 3"});
}

TEST_F(Tracking, ANoticeInPlaceOfAClosedNativeViewEndsTheCallAtOnce) {
  apply({nativeSample({{"window", "view", {"zoom", ""}, CallState::joined, "", false}})});
  AppSample notice =
      nativeSample({{"window", "notice", {"zoom", "zoom:123456"}, CallState::left, "", false}});
  notice.closedViews = {"view"};
  EXPECT_EQ(apply({notice}), Told{"left 2"});
  EXPECT_TRUE(tracker.calls.empty());
}

TEST_F(Tracking, TheTrackerKnowsWhichProcessesHaveACall) {
  apply({browserSample({meetSurface()})});
  EXPECT_TRUE(tracker.tracks(7));
  EXPECT_FALSE(tracker.tracks(42));
}

TEST_F(Tracking, ASequenceThatWouldOverflowEndsTheProgram) {
  apply({browserSample({meetSurface()})});
  tracker.calls.begin()->second.sequence = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(tracker.apply({}, false), "");
}

TEST_F(Tracking, ACountOfAbsencesThatWouldOverflowEndsTheProgram) {
  apply({nativeSample({zoomSurface()})});
  tracker.calls.begin()->second.missing = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(tracker.apply({nativeAbsence()}, true), "");
}

}  // namespace
}  // namespace callmonitor
