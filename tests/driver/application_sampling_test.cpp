// What a sample says of an application: which process it is, its windows, and what of its tracked
// calls is gone.
#include "driver/application_sampling.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/sampling.h"

namespace callmonitor {
namespace {

using namespace support;
namespace code = platform::code;

struct ApplicationSampling : SamplingTest {};

constexpr const char* chrome = "com.google.Chrome";
constexpr const char* zoomClient = "us.zoom.xos";

TEST_F(ApplicationSampling, ASampleSaysWhichProcessItIsAndWhetherItIsABrowser) {
  struct Row {
    const char* bundle;
    bool browser;
    bool standalone;
  };
  for (const Row& row : std::vector<Row>{{chrome, true, false},
                                         {"com.microsoft.edgemac", true, false},
                                         {"com.apple.Safari", true, false},
                                         {webApp, true, true},
                                         {zoomClient, false, false},
                                         {"com.microsoft.teams2", false, false},
                                         {"org.example.Calls", false, false}}) {
    SCOPED_TRACE(row.bundle);
    scripted::reset();
    start(42, row.bundle);
    desktop().applications[0].launchedAt = 12.25;
    const AppSample sampled = sample(42);
    EXPECT_EQ(sampled.pid, 42);
    EXPECT_EQ(sampled.launchedAt, 12.25);
    EXPECT_EQ(sampled.browser, row.browser);
    EXPECT_EQ(sampled.standalone, row.standalone);
    EXPECT_EQ(sampled.applicationBundleID, row.bundle);
  }
}

TEST_F(ApplicationSampling, AnUnknownLaunchIsZeroAndReportsNoBundle) {
  start(42, zoomClient);
  desktop().applications[0].launchedAt.reset();
  const AppSample sampled = sample(42);
  EXPECT_EQ(sampled.launchedAt, 0);
  EXPECT_EQ(sampled.applicationBundleID, std::nullopt);
}

TEST_F(ApplicationSampling, TheBundleIsReportedOnlyForTheSameLaunchOfTheProcess) {
  const std::string lastCall = "application 42";
  start(42, zoomClient);
  EXPECT_EQ(sample(42).applicationBundleID, zoomClient);
  ASSERT_EQ(timesCalled(lastCall), 1U);
  const platform::Application before = desktop().applications[0];
  const SamplingContext context{deadline, desktop().audio, tracker, memory, scans};
  relaunch(42, 2.0);
  EXPECT_EQ(sampleApplication(before, context).applicationBundleID, std::nullopt) << "relaunched";
  desktop().applications.clear();
  EXPECT_EQ(sampleApplication(before, context).applicationBundleID, std::nullopt) << "gone";
}

TEST_F(ApplicationSampling, AudioIsThatOfTheClient) {
  start(7, chrome);
  EXPECT_FALSE(sample(7).audio.has_value()) << "no list";
  desktop().audio = {{"com.google.Chrome.helper", true, false}};
  const AppSample sampled = sample(7);
  ASSERT_TRUE(sampled.audio.has_value());
  EXPECT_TRUE(sampled.audio->input);
  EXPECT_FALSE(sampled.audio->output);
}

// The cycle's deadline.

TEST_F(ApplicationSampling, FromTheDeadlineOnASampleSaysOnlyThatTheProcessLives) {
  desktop().audio = {{chrome, true, true}};
  for (const double late : {0.0, 5.0}) {
    SCOPED_TRACE(late);
    start(7, chrome, {window("w", "Meet", {page("p", meetAddress, callControls())})});
    track(7, {"meet", meetKey}, "gone window", "gone page");
    desktop().uptime = deadline + late;
    const AppSample sampled = sample(7);
    EXPECT_TRUE(desktop().calls.empty()) << "nothing is asked";
    EXPECT_EQ(sampled.pid, 7);
    EXPECT_EQ(sampled.launchedAt, 1.0);
    EXPECT_TRUE(sampled.browser);
    EXPECT_EQ(sampled.applicationBundleID, std::nullopt);
    EXPECT_FALSE(sampled.audio.has_value());
    EXPECT_FALSE(sampled.viewInventoryComplete);
    EXPECT_FALSE(sampled.windows.has_value());
    EXPECT_TRUE(sampled.closedViews.empty());
    EXPECT_TRUE(sampled.closedWindows.empty());
    EXPECT_TRUE(sampled.surfaces.empty());
  }
  scripted::reset();
  start(8, webApp);
  desktop().uptime = deadline;
  const AppSample standalone = sample(8);
  EXPECT_TRUE(standalone.browser);
  EXPECT_TRUE(standalone.standalone);
}

TEST_F(ApplicationSampling, JustBeforeTheDeadlineATreeIsStillOpened) {
  start(7, chrome);
  desktop().uptime = std::nextafter(deadline, 0.0);
  EXPECT_TRUE(sample(7).windows.has_value());
  EXPECT_EQ(timesCalled("open 7"), 1U);
}

TEST_F(ApplicationSampling, AMessageMayTakeAFifthOfASecond) {
  start(7, chrome);
  desktop().messageTimeout = 99;
  (void)sample(7);
  EXPECT_EQ(desktop().messageTimeout, 0.2);
}

// Enhanced accessibility.

const std::string enable = "set app:42 AXEnhancedUserInterface true";

TEST_F(ApplicationSampling, OnlyChromiumApplicationsAreAskedToShowTheirPages) {
  struct Row {
    const char* bundle;
    bool asked;
  };
  for (const Row& row : std::vector<Row>{{chrome, true},
                                         {"com.microsoft.edgemac", true},
                                         {webApp, true},
                                         {"com.apple.Safari", false},
                                         {"com.microsoft.teams2", false},
                                         {zoomClient, false}}) {
    SCOPED_TRACE(row.bundle);
    scripted::reset();
    memory = {};
    start(42, row.bundle);
    (void)sample(42);
    EXPECT_EQ(timesCalled(enable), row.asked ? 1U : 0U);
    EXPECT_EQ(memory.accessibilityEnabled.contains(42), row.asked);
  }
}

TEST_F(ApplicationSampling, ALaunchIsAskedOnceBeforeItsWindowsAreRead) {
  start(42, chrome);
  (void)sample(42);
  EXPECT_LT(placeOf(enable), placeOf("read app:42 AXWindows"));
  EXPECT_EQ(memory.accessibilityEnabled, (std::map<std::int32_t, double>{{42, 1.0}}));
  (void)sample(42);
  EXPECT_EQ(timesCalled(enable), 0U);
}

TEST_F(ApplicationSampling, AnotherLaunchUnderTheSameProcessIdentifierIsAskedAgain) {
  start(42, webApp);
  (void)sample(42);
  relaunch(42, 2.0);
  (void)sample(42);
  EXPECT_EQ(timesCalled(enable), 1U);
  EXPECT_EQ(memory.accessibilityEnabled, (std::map<std::int32_t, double>{{42, 2.0}}));
}

TEST_F(ApplicationSampling, ALaunchThatRefusedIsAskedAgainEveryTime) {
  start(42, chrome);
  for (const std::int32_t refusal :
       {code::failure, code::cannotComplete, code::attributeUnsupported, code::invalidElement}) {
    desktop().setAttributeCode = refusal;
    EXPECT_TRUE(sample(42).windows.has_value()) << "a refusal does not stop the sampling";
    EXPECT_EQ(timesCalled(enable), 1U);
    EXPECT_TRUE(memory.accessibilityEnabled.empty());
  }
  desktop().setAttributeCode = code::success;
  (void)sample(42);
  EXPECT_EQ(timesCalled(enable), 1U);
  (void)sample(42);
  EXPECT_EQ(timesCalled(enable), 0U);
}

// Windows.

TEST_F(ApplicationSampling, WindowsAreKnownByTheirIdentifiersAndRemembered) {
  start(42, zoomClient, {window("a", ""), window("b", "")});
  const std::set<std::string> identifiers{identifierOf("a"), identifierOf("b")};
  EXPECT_EQ(sample(42).windows, identifiers);
  EXPECT_EQ(memory.seen, identifiers);
  EXPECT_EQ(memory.elements.at(identifierOf("a")), scripted::element("a"));
  EXPECT_EQ(memory.elements.at(identifierOf("b")), scripted::element("b"));
}

TEST_F(ApplicationSampling, AnEmptyListOfWindowsIsNoWindowsAndACompleteInventory) {
  start(42, zoomClient);
  const AppSample sampled = sample(42);
  ASSERT_TRUE(sampled.windows.has_value());
  EXPECT_TRUE(sampled.windows->empty());
  EXPECT_TRUE(sampled.viewInventoryComplete);
}

TEST_F(ApplicationSampling, AnythingButAListOfElementsLeavesTheWindowsUnread) {
  const std::vector<std::pair<const char*, scripted::Answer>> answers{
      {"a failure", scripted::codeAnswer(code::failure)},
      {"no answer in time", scripted::codeAnswer(code::cannotComplete)},
      {"an application element that is gone", scripted::codeAnswer(code::invalidElement)},
      {"an attribute that is not supported", scripted::codeAnswer(code::attributeUnsupported)},
      {"an attribute without a value", scripted::codeAnswer(code::noValue)},
      {"success without a value", {{code::success, {}}, 0}},
      {"a text", scripted::textAnswer("w")},
      {"a flag", scripted::flagAnswer(true)},
      {"a single element", scripted::elementAnswer("w")},
      {"another type", {{code::success, platform::OtherType()}, 0}},
      {"a list beside a failure", {{code::failure, std::vector{scripted::element("w")}}, 0}},
  };
  for (const auto& [sentence, answer] : answers) {
    SCOPED_TRACE(sentence);
    start(42, zoomClient, {window("w", "Zoom Meeting", callControls())});
    track(42, {"zoom", "zoom:native-1"}, "gone window", "gone view");
    desktop().elements["app:42"].insert_or_assign("AXWindows", answer);
    const AppSample sampled = sample(42);
    EXPECT_FALSE(sampled.windows.has_value());
    EXPECT_TRUE(sampled.surfaces.empty());
    EXPECT_EQ(sampled.closedViews, std::set{identifierOf("gone view")})
        << "tracked views are still asked after";
    EXPECT_EQ(sampled.closedWindows, std::set{identifierOf("gone window")});
    quit(42);
  }
}

// Closed views and windows.

TEST_F(ApplicationSampling, OnlyTheAnswerThatAnElementIsGoneCountsAsClosed) {
  struct Row {
    const char* sentence;
    scripted::Attributes answers;
    bool closed;
  };
  for (const Row& row : std::vector<Row>{
           {"a role", {{"AXRole", scripted::textAnswer("AXWebArea")}}, false},
           {"a failure", {{"AXRole", scripted::codeAnswer(code::failure)}}, false},
           {"no answer in time", {{"AXRole", scripted::codeAnswer(code::cannotComplete)}}, false},
           {"a bad argument", {{"AXRole", scripted::codeAnswer(code::illegalArgument)}}, false},
           {"no role", {}, false},
           {"no value", {{"AXRole", scripted::codeAnswer(code::noValue)}}, false},
           {"gone", {{"AXRole", scripted::codeAnswer(code::invalidElement)}}, true},
       }) {
    SCOPED_TRACE(row.sentence);
    start(7, chrome);
    track(7, {"meet", meetKey}, "w", "p");
    desktop().elements["w"] = row.answers;
    desktop().elements["p"] = row.answers;
    const AppSample sampled = sample(7);
    const std::set<std::string> none;
    EXPECT_EQ(sampled.closedViews, row.closed ? std::set{identifierOf("p")} : none);
    EXPECT_EQ(sampled.closedWindows, row.closed ? std::set{identifierOf("w")} : none);
    quit(7);
  }
}

TEST_F(ApplicationSampling, AllViewsAreAskedAfterBeforeAllWindows) {
  start(7, chrome);
  track(7, {"meet", "meet:b"}, "w2", "p2");
  track(7, {"meet", "meet:a"}, "w1", "p1");
  (void)sample(7);
  EXPECT_EQ(callsAfter("read "), (std::vector<std::string>{"app:7 AXWindows", "p1 AXRole",
                                                           "p2 AXRole", "w1 AXRole", "w2 AXRole"}));
}

TEST_F(ApplicationSampling, CallsOfOtherProcessesAreNotAskedAfter) {
  start(7, chrome);
  track(8, {"meet", meetKey}, "w", "p");
  const AppSample sampled = sample(7);
  EXPECT_TRUE(sampled.closedViews.empty());
  EXPECT_TRUE(sampled.closedWindows.empty());
  EXPECT_EQ(timesCalled("read p AXRole"), 0U);
}

TEST_F(ApplicationSampling, AnElementThatIsNotRememberedIsNotKnownToBeClosed) {
  start(7, chrome);
  track(7, {"meet", meetKey}, "w", "p");
  memory.elements.clear();
  const AppSample sampled = sample(7);
  EXPECT_TRUE(sampled.closedViews.empty());
  EXPECT_TRUE(sampled.closedWindows.empty());
}

TEST_F(ApplicationSampling, NothingIsAskedAfterOnceTheDeadlineIsReached) {
  start(7, chrome);
  track(7, {"meet", "meet:a"}, "w1", "p1");
  track(7, {"meet", "meet:b"}, "w2", "p2");
  clockAt("read p1 AXRole", deadline);
  const AppSample sampled = sample(7);
  EXPECT_EQ(sampled.closedViews, std::set{identifierOf("p1")});
  EXPECT_TRUE(sampled.closedWindows.empty());
  EXPECT_EQ(timesCalled("read p2 AXRole"), 0U);
  EXPECT_EQ(timesCalled("read w1 AXRole"), 0U);
}

}  // namespace
}  // namespace callmonitor
