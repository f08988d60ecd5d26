// What a bundle identifier alone says about an application.
#include "identity/applications.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace callmonitor {
namespace {

const std::string appId = "kjgfgldnnfoeklkmfkjfagphfepbbdan";
const std::string chromeShim = "com.google.Chrome.app.";
const std::string edgeShim = "com.microsoft.edgemac.app.";

TEST(Applications, KnowTheNativeMeetingClientsAndTheirProviders) {
  EXPECT_EQ(nativeProvider("us.zoom.xos"), "zoom");
  EXPECT_EQ(nativeProvider("com.microsoft.teams2"), "teams");
  EXPECT_EQ(nativeProvider("com.microsoft.teams"), "teams");
  EXPECT_EQ(nativeProvider("com.cisco.webexmeetingsapp"), "webex");
  EXPECT_EQ(providers.size(), 4U);
  for (const std::string_view other :
       {"", "com.google.Chrome", "com.apple.FaceTime", "US.ZOOM.XOS", "us.zoom.xos.helper"}) {
    SCOPED_TRACE(other);
    EXPECT_EQ(nativeProvider(other), std::nullopt);
  }
}

TEST(Applications, KnowTheThreeBrowsers) {
  EXPECT_EQ(browsers, (std::set<std::string, std::less<>>{
                          "com.google.Chrome", "com.microsoft.edgemac", "com.apple.Safari"}));
}

struct KindCase {
  std::string_view sentence;
  std::string bundle;
  bool standalone;
  bool browser;
  bool webClient;
  bool chromium;
};

void expectKinds(const std::vector<KindCase>& cases) {
  for (const KindCase& row : cases) {
    SCOPED_TRACE(std::string(row.sentence) + ": " + row.bundle);
    EXPECT_EQ(standaloneBrowser(row.bundle), row.standalone);
    EXPECT_EQ(browserApplication(row.bundle), row.browser);
    EXPECT_EQ(webClientApplication(row.bundle), row.webClient);
    EXPECT_EQ(chromiumApplication(row.bundle), row.chromium);
  }
}

TEST(Applications, AreBrowsersWebClientsOrChromiumByTable) {
  expectKinds({
      {"Chrome is no web app", "com.google.Chrome", false, true, true, true},
      {"Edge is no web app", "com.microsoft.edgemac", false, true, true, true},
      {"Safari is not Chromium", "com.apple.Safari", false, true, true, false},
      {"Teams is a web view", "com.microsoft.teams2", false, false, true, false},
      {"old Teams is a web view", "com.microsoft.teams", false, false, true, false},
      {"Zoom is none of these", "us.zoom.xos", false, false, false, false},
      {"Webex is none of these", "com.cisco.webexmeetingsapp", false, false, false, false},
      {"an unknown application is none", "org.example.untrusted", false, false, false, false},
      {"an empty identifier is none", "", false, false, false, false},
      {"case matters", "com.google.chrome", false, false, false, false},
      {"a foreign prefix", "org.example.com.google.Chrome", false, false, false, false},
      {"a helper is no browser", "com.google.Chrome.helper", false, false, false, false},
      {"a preview of Teams is not Teams", "com.microsoft.teams2.preview", false, false, false,
       false},
  });
}

TEST(Applications, AreWebAppsByPrefixAndSuffix) {
  expectKinds({
      {"a Chrome web app", chromeShim + appId, true, true, true, true},
      {"an Edge web app", edgeShim + appId, true, true, true, true},
      {"the first and last letters", chromeShim + std::string(16, 'a') + std::string(16, 'p'), true,
       true, true, true},
      {"a profile before the letters", chromeShim + "Profile-2-" + appId, true, true, true, true},
      {"a profile of Edge", edgeShim + "Default-" + appId, true, true, true, true},
      {"a profile of one character", chromeShim + "x-" + appId, true, true, true, true},
      {"a profile that is a hyphen", chromeShim + "--" + appId, true, true, true, true},
      {"a profile of 80 characters", chromeShim + std::string(80, 'x') + "-" + appId, true, true,
       true, true},
      {"one line feed at the end", chromeShim + appId + "\n", true, true, true, true},
  });
}

TEST(Applications, AreNoWebAppsWhereAnyPartIsWrong) {
  const std::string cases[] = {
      chromeShim + "Profile-2-not-an-app",
      chromeShim + "invalid",
      chromeShim,
      edgeShim + "invalid",
      chromeShim + std::string(31, 'a'),
      chromeShim + std::string(33, 'a'),
      chromeShim + std::string(31, 'a') + "q",
      chromeShim + std::string(31, 'a') + "A",
      chromeShim + std::string(31, 'a') + "1",
      chromeShim + std::string(81, 'x') + "-" + appId,
      chromeShim + "-" + appId,
      chromeShim + "Profile 2-" + appId,
      chromeShim + "Profile_2-" + appId,
      chromeShim + "Profil\xC3\xA9-" + appId,
      chromeShim + appId + ".helper",
      chromeShim + appId + "\n\n",
      "com.google.Chrome.app" + appId,
      "com.google.chrome.app." + appId,
      "org.example." + chromeShim + appId,
      "com.apple.Safari.app." + appId,
      appId,
  };
  for (const std::string& bundle : cases) {
    expectKinds({{"no web app", bundle, false, false, false, false}});
  }
}

struct ReportCase {
  std::string_view sentence;
  double expectedLaunch;
  std::optional<double> actualLaunch;
  std::optional<std::string> bundle;
  bool reported;
};

TEST(Applications, ReportAnIdentifierOnlyForTheLaunchThatWasSeen) {
  const double launch = 1700000000.25;
  const double notANumber = std::numeric_limits<double>::quiet_NaN();
  const std::string chrome = "com.google.Chrome";
  const std::string longest(255, 'a');
  const std::string tooLong(256, 'a');
  std::string accents;  // 255 characters of two code points each
  for (int i = 0; i < 255; ++i) accents += "e\xCC\x81";
  const ReportCase cases[] = {
      {"the same launch", launch, launch, chrome, true},
      {"a launch at second one", 1.0, 1.0, chrome, true},
      {"an expected launch of 0", 0.0, 0.0, chrome, false},
      {"an expected launch below 0", -1.0, -1.0, chrome, false},
      {"an expected launch that is no number", notANumber, notANumber, chrome, false},
      {"the smallest expected launch", std::numeric_limits<double>::denorm_min(),
       std::numeric_limits<double>::denorm_min(), chrome, true},
      {"no actual launch", launch, std::nullopt, chrome, false},
      {"another launch", launch, launch + 1, chrome, false},
      {"a launch that differs by the least amount", launch, std::nextafter(launch, 2e9), chrome,
       false},
      {"no identifier", launch, launch, std::nullopt, false},
      {"an empty identifier", launch, launch, "", false},
      {"255 characters", launch, launch, longest, true},
      {"256 characters", launch, launch, tooLong, false},
      {"255 user-perceived characters", launch, launch, accents, true},
      {"256 user-perceived characters", launch, launch, accents + "e\xCC\x81", false},
  };
  for (const ReportCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(observedApplicationBundleID(row.expectedLaunch, row.actualLaunch, row.bundle),
              row.reported ? row.bundle : std::nullopt);
  }
}

struct RotationCase {
  std::string_view sentence;
  std::vector<int> items;
  long offset;
  std::vector<int> expected;
};

TEST(Applications, RotateKeepsEveryItemAndTheirOrder) {
  const RotationCase cases[] = {
      {"five by 7 start at the third", {1, 2, 3, 4, 5}, 7, {3, 4, 5, 1, 2}},
      {"by 0 nothing changes", {1, 2, 3}, 0, {1, 2, 3}},
      {"by the count nothing changes", {1, 2, 3}, 3, {1, 2, 3}},
      {"by one", {1, 2, 3}, 1, {2, 3, 1}},
      {"by one less than the count", {1, 2, 3}, 2, {3, 1, 2}},
      {"one item", {1}, 1000003, {1}},
      {"an empty list stays empty", {}, 5, {}},
      {"an empty list does not mind a negative offset", {}, -1, {}},
      {"a negative multiple of the count has no remainder", {1, 2, 3}, -3, {1, 2, 3}},
  };
  for (const RotationCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(rotated(row.items, row.offset), row.expected);
  }
  EXPECT_EQ(rotated(std::vector<std::string>{"a", "b"}, 1), (std::vector<std::string>{"b", "a"}));
}

TEST(ApplicationsDeathTest, ANegativeRemainderEndsTheProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_DEATH(static_cast<void>(rotated(std::vector<int>{1, 2, 3}, -1)), "");
}

}  // namespace
}  // namespace callmonitor
