#include "platform/linux/bundle_identifier.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/identity_facts.h"

namespace callmonitor::platform {
namespace {

struct Case {
  std::string name;
  IdentityFacts facts;
  std::optional<std::string> bundle;
};

IdentityFacts program(const std::string& path) {
  return {path, "", "", "", ""};
}
IdentityFacts flatpak(const std::string& name) {
  return {"/app/bin/x", "", name, "", ""};
}
IdentityFacts snap(const std::string& name) {
  return {"/snap/x/1/bin/x", "", "", name, ""};
}
IdentityFacts launched(const std::string& file) {
  return {"/opt/x/wrapper", "", "", "", file};
}

TEST(BundleIdentifier, NamesTheClientsThatTheRulesKnow) {
  const std::string chrome = "com.google.Chrome";
  const std::string edge = "com.microsoft.edgemac";
  const std::string zoom = "us.zoom.xos";
  const std::string teams = "com.microsoft.teams2";
  const std::string webex = "com.cisco.webexmeetingsapp";
  const std::vector<Case> cases{
      {"Chromium is Chrome", program("/usr/lib/chromium/chromium"), chrome},
      {"Chromium under its older file name", program("/usr/lib/chromium-browser/chromium-browser"),
       chrome},
      {"Chrome by its executable", program("/opt/google/chrome/chrome"), chrome},
      {"Edge by its executable", program("/opt/microsoft/msedge/msedge"), edge},
      {"Zoom by its executable", program("/opt/zoom/zoom"), zoom},
      {"Teams by its executable", program("/usr/share/teams/teams"), teams},
      {"the community's Teams client", program("/opt/teams-for-linux/teams-for-linux"), teams},
      {"Webex by its executable", program("/opt/Webex/bin/CiscoCollabHost"), webex},
      {"Chrome from Flatpak", flatpak("com.google.Chrome"), chrome},
      {"Chromium from Flatpak", flatpak("org.chromium.Chromium"), chrome},
      {"Edge from Flatpak", flatpak("com.microsoft.Edge"), edge},
      {"Zoom from Flatpak", flatpak("us.zoom.Zoom"), zoom},
      {"Teams from Flatpak", flatpak("com.github.IsmaelMartinez.teams_for_linux"), teams},
      {"Chromium from Snap", snap("chromium"), chrome},
      {"Zoom from Snap", snap("zoom-client"), zoom},
      {"Teams from Snap", snap("teams-for-linux"), teams},
      {"Chrome by its desktop file", launched("/usr/share/applications/google-chrome.desktop"),
       chrome},
      {"Edge by its desktop file", launched("/usr/share/applications/microsoft-edge.desktop"),
       edge},
      {"Zoom by its desktop file", launched("/usr/share/applications/Zoom.desktop"), zoom},
      {"Webex by its desktop file", launched("webex.desktop"), webex},
  };
  for (const Case& each : cases) EXPECT_EQ(bundleIdentifier(each.facts), each.bundle) << each.name;
}

TEST(BundleIdentifier, AsksThePackageThenTheExecutableThenTheDesktopFile) {
  const std::vector<Case> cases{
      {"a web app's window is its browser's",
       {"/usr/lib/chromium/chromium", "", "", "", "/home/u/chrome-abcd-Default.desktop"},
       "com.google.Chrome"},
      {"a browser that was upgraded while it runs is still the browser",
       program("/usr/lib/chromium/chromium (deleted)"), "com.google.Chrome"},
      {"a package that ships a file called chrome is itself",
       {"/app/bin/chrome", "", "org.example.Viewer", "", ""},
       "org.example.Viewer"},
      {"a Snap that ships a file called chrome is itself",
       {"/snap/viewer/1/chrome", "", "", "viewer", ""},
       "viewer"},
      {"an unlisted application keeps its desktop file's name",
       launched("/usr/share/applications/org.example.Editor.desktop"), "org.example.Editor"},
      {"without a desktop file it keeps its executable's name", program("/usr/bin/xterm"), "xterm"},
      {"a program whose file is out of bounds goes by its command",
       {"", "/usr/lib/chromium/chromium", "", "", ""},
       "com.google.Chrome"},
      {"the readable file comes before the command",
       {"/usr/bin/xterm", "zoom", "", "", ""},
       "xterm"},
      {"a process of which nothing is known has no identifier", {}, std::nullopt},
  };
  for (const Case& each : cases) EXPECT_EQ(bundleIdentifier(each.facts), each.bundle) << each.name;
}

TEST(FlatpakIdentifier, IsTheNameInTheApplicationGroup) {
  EXPECT_EQ(flatpakIdentifier("[Application]\nname=us.zoom.Zoom\nruntime=r\n[Context]\n"),
            "us.zoom.Zoom");
  EXPECT_EQ(flatpakIdentifier("[Instance]\nname=wrong\n[Application]\nruntime=r\n"), "");
  EXPECT_EQ(flatpakIdentifier(""), "");
}

TEST(SnapName, IsTheDirectoryUnderTheSnapRoot) {
  EXPECT_EQ(snapName("/snap/chromium/2345/usr/lib/chromium-browser/chrome"), "chromium");
  EXPECT_EQ(snapName("/var/lib/snapd/snap/zoom-client/1/zoom"), "zoom-client");
  EXPECT_EQ(snapName("/opt/snap/chromium/1/chrome"), "");
  EXPECT_EQ(snapName("/snap/chromium"), "");
}

TEST(LaunchedDesktopFile, BelongsToTheLaunchedProcessOnly) {
  const std::vector<std::string> environment{
      "HOME=/home/u", "GIO_LAUNCHED_DESKTOP_FILE=/a/b.desktop", "GIO_LAUNCHED_DESKTOP_FILE_PID=42"};
  EXPECT_EQ(launchedDesktopFile(environment, 42), "/a/b.desktop");
  EXPECT_EQ(launchedDesktopFile(environment, 43), "") << "a child inherits the environment";
  EXPECT_EQ(launchedDesktopFile({"HOME=/"}, 42), "");
}

}  // namespace
}  // namespace callmonitor::platform
