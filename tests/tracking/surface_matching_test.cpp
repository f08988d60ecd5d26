// Which surface a tracked call takes.
#include "tracking/surface_matching.h"

#include <gtest/gtest.h>

#include "support/tracker_samples.h"

namespace callmonitor {
namespace {

using namespace support;

constexpr CallState joined = CallState::joined;
constexpr CallState left = CallState::left;
constexpr CallState unknown = CallState::unknown;

Call browserCall() {
  Call call;
  call.pid = 7;
  call.launchedAt = 1.0;
  call.browser = true;
  call.conference = meetMeeting;
  call.window = "window";
  call.element = "element";
  return call;
}

Call nativeCall() {
  Call call = browserCall();
  call.pid = 42;
  call.browser = false;
  call.conference = {"zoom", "zoom:native-1"};
  return call;
}

// A surface of any kind: conference, element, window and state.
Surface shown(const Conference& conference, const std::string& element, const std::string& window,
              CallState state) {
  return {window, element, conference, state, "", false};
}

const Conference otherMeeting{"meet", "meet:xxx-yyyy-zzz"};
const Conference zoomWindow{"zoom", ""};
const Conference zoomNumbered{"zoom", "zoom:1234567890"};
const Conference webex{"webex", ""};

struct Row {
  const char* sentence;
  std::vector<Surface> surfaces;
  std::optional<std::size_t> taken;
};

TEST(SurfaceOf, ABrowserCallTakesItsPageOrTheOneJoinedViewThatReplacedIt) {
  const std::vector<Row> rows{
      {"no surface leaves nothing to take", {}, std::nullopt},
      {"the page itself is taken while joined",
       {shown(meetMeeting, "element", "window", joined)},
       0},
      {"the page itself is taken in a state that decides nothing",
       {shown(meetMeeting, "element", "window", unknown)},
       0},
      {"the page itself is taken when it says left",
       {shown(meetMeeting, "element", "window", left)},
       0},
      {"the page itself is taken in whatever window it is",
       {shown(meetMeeting, "element", "other window", unknown)},
       0},
      {"the page itself is not taken when it shows another meeting",
       {shown(otherMeeting, "element", "window", joined)},
       std::nullopt},
      {"the page itself is not taken when another provider has the same key",
       {shown({"teams", meetMeeting.key}, "element", "window", joined)},
       std::nullopt},
      {"the old page that says left comes before another joined one",
       {shown(meetMeeting, "new", "window", joined), shown(meetMeeting, "element", "window", left)},
       1},
      {"a joined page in the same window replaces the old one",
       {shown(meetMeeting, "new", "window", joined)},
       0},
      {"a page in the same window that is not joined replaces nothing",
       {shown(meetMeeting, "new", "window", unknown)},
       std::nullopt},
      {"a page in the same window that says left replaces nothing",
       {shown(meetMeeting, "new", "window", left)},
       std::nullopt},
      {"a page with another meeting in the same window replaces nothing",
       {shown(otherMeeting, "new", "window", joined)},
       std::nullopt},
      {"two joined pages in the same window leave no choice",
       {shown(meetMeeting, "one", "window", joined), shown(meetMeeting, "two", "window", joined)},
       std::nullopt},
      {"one joined page in the same window is told from one in another window",
       {shown(meetMeeting, "one", "other window", joined),
        shown(meetMeeting, "two", "window", joined)},
       1},
      {"two surfaces of the old element let the one joined in its window be taken",
       {shown(meetMeeting, "element", "window", unknown),
        shown(meetMeeting, "element", "other window", joined),
        shown(meetMeeting, "new", "window", joined)},
       2},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    AppSample sample = browserSample(row.surfaces);
    sample.windows->insert("window");  // the call's window is still there
    EXPECT_EQ(surfaceOf(browserCall(), sample, std::vector<bool>(row.surfaces.size())), row.taken);
  }
}

TEST(SurfaceOf, ABrowserCallWhoseWindowIsGoneTakesTheOneJoinedPageOfItsMeetingInAnyWindow) {
  const std::vector<Row> rows{
      {"the tab moved to another window", {shown(meetMeeting, "new", "other window", joined)}, 0},
      {"a page that is not joined is not the moved tab",
       {shown(meetMeeting, "new", "other window", unknown)},
       std::nullopt},
      {"a page that says left is not the moved tab",
       {shown(meetMeeting, "new", "other window", left)},
       std::nullopt},
      {"another meeting is not the moved tab",
       {shown(otherMeeting, "new", "other window", joined)},
       std::nullopt},
      {"two joined pages leave no choice",
       {shown(meetMeeting, "one", "other window", joined),
        shown(meetMeeting, "two", "third window", joined)},
       std::nullopt},
      {"the moved tab is told from a page that is not joined",
       {shown(meetMeeting, "one", "third window", unknown),
        shown(meetMeeting, "two", "other window", joined)},
       1},
      {"two surfaces of the old element let the one joined page be taken",
       {shown(meetMeeting, "element", "third window", unknown),
        shown(meetMeeting, "element", "other window", joined)},
       1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    const AppSample sample = browserSample(row.surfaces);
    EXPECT_EQ(surfaceOf(browserCall(), sample, std::vector<bool>(row.surfaces.size())), row.taken);
  }
}

TEST(SurfaceOf, ANativeCallTakesSurfacesOfItsProviderWhateverTheirKey) {
  const std::vector<Row> rows{
      {"its own view without a key", {shown(zoomWindow, "element", "window", joined)}, 0},
      {"its own view with a meeting's key", {shown(zoomNumbered, "element", "window", unknown)}, 0},
      {"its own view that says left", {shown(zoomNumbered, "element", "window", left)}, 0},
      {"a view of another provider is not its own",
       {shown(webex, "element", "window", joined)},
       std::nullopt},
      {"a joined view in its window replaces the old one",
       {shown(zoomNumbered, "new", "window", joined)},
       0},
      {"two calls of one client are told apart by element",
       {shown(zoomWindow, "other", "other window", joined),
        shown(zoomWindow, "element", "window", joined)},
       1},
      {"two joined views in its window leave no choice",
       {shown(zoomWindow, "one", "window", joined), shown(zoomNumbered, "two", "window", joined)},
       std::nullopt},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    AppSample sample = nativeSample(row.surfaces);
    sample.windows->insert("window");
    EXPECT_EQ(surfaceOf(nativeCall(), sample, std::vector<bool>(row.surfaces.size())), row.taken);
  }
}

TEST(SurfaceOf, ANativeCallNeverFollowsIntoAnotherWindow) {
  const AppSample sample = nativeSample({shown(zoomWindow, "new", "other window", joined)});
  EXPECT_EQ(surfaceOf(nativeCall(), sample, {false}), std::nullopt);
}

// The rule that lets a notice in the window of a closed native view end its call.
TEST(SurfaceOf, ANativeCallWhoseViewIsClosedTakesTheOneNoticeInItsWindow) {
  const std::vector<Row> rows{
      {"a notice that it was left", {shown(zoomWindow, "new", "window", left)}, 0},
      {"a notice with a meeting's key", {shown(zoomNumbered, "new", "window", left)}, 0},
      {"a notice in another window is not the call's",
       {shown(zoomWindow, "new", "other window", left)},
       std::nullopt},
      {"a notice of another provider is not the call's",
       {shown(webex, "new", "window", left)},
       std::nullopt},
      {"a view that decides nothing is no notice",
       {shown(zoomWindow, "new", "window", unknown)},
       std::nullopt},
      {"two notices leave no choice",
       {shown(zoomWindow, "one", "window", left), shown(zoomWindow, "two", "window", left)},
       std::nullopt},
      {"a joined view in the window comes before the notice",
       {shown(zoomWindow, "one", "window", left), shown(zoomWindow, "two", "window", joined)},
       1},
      {"where several joined views stand in the window the notice is not looked at",
       {shown(zoomWindow, "one", "window", left), shown(zoomWindow, "two", "window", joined),
        shown(zoomWindow, "three", "window", joined)},
       std::nullopt},
      {"a joined view in another window leaves the notice to be taken",
       {shown(zoomWindow, "one", "other window", joined), shown(zoomWindow, "two", "window", left)},
       1},
      {"two surfaces of the old element that decide nothing leave the notice to be taken",
       {shown(zoomWindow, "element", "third window", unknown),
        shown(zoomWindow, "element", "other window", unknown),
        shown(zoomWindow, "new", "window", left)},
       2},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    AppSample sample = nativeSample(row.surfaces);
    sample.windows->insert("window");
    sample.closedViews = {"element"};
    EXPECT_EQ(surfaceOf(nativeCall(), sample, std::vector<bool>(row.surfaces.size())), row.taken);
  }
}

TEST(SurfaceOf, ANoticeIsNotTakenUnlessTheViewIsClosedForCertain) {
  const AppSample closed = [] {
    AppSample sample = nativeSample({shown(zoomWindow, "new", "window", left)});
    sample.closedViews = {"element"};
    return sample;
  }();
  ASSERT_EQ(surfaceOf(nativeCall(), closed, {false}), 0U);

  AppSample notClosed = closed;
  notClosed.closedViews = {"another"};
  EXPECT_EQ(surfaceOf(nativeCall(), notClosed, {false}), std::nullopt) << "view not closed";

  AppSample cut = closed;
  cut.viewInventoryComplete = false;
  EXPECT_EQ(surfaceOf(nativeCall(), cut, {false}), std::nullopt) << "inventory incomplete";

  AppSample browser = browserSample({shown(meetMeeting, "new", "window", left)});
  browser.closedViews = {"element"};
  EXPECT_EQ(surfaceOf(browserCall(), browser, {false}), std::nullopt) << "a browser's page";
}

TEST(SurfaceOf, AClaimedSurfaceIsNoCandidate) {
  const AppSample sample = browserSample({shown(meetMeeting, "element", "window", joined),
                                          shown(meetMeeting, "new", "window", joined)});
  EXPECT_EQ(surfaceOf(browserCall(), sample, {true, true}), std::nullopt);
  EXPECT_EQ(surfaceOf(browserCall(), sample, {true, false}), 1U)
      << "a claimed surface does not make the rest ambiguous";

  AppSample notices = nativeSample(
      {shown(zoomWindow, "one", "window", left), shown(zoomWindow, "two", "window", left)});
  notices.closedViews = {"element"};
  EXPECT_EQ(surfaceOf(nativeCall(), notices, {false, true}), 0U);
}

}  // namespace
}  // namespace callmonitor
