// What the doctor asks of a Mac, and what it leaves behind there.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "doctor/examination.h"
#include "doctor/report_text.h"
#include "macos/stepped_desktop.h"

namespace callmonitor::macos {
namespace {

// Applications of every kind, each with a window; all but the nameless one capture and play.
constexpr const char* everyKind = R"(
app chrome com.google.Chrome
  window w1 "Standup"
    group
      button "Reload"
app safari com.apple.Safari
  window w2 "News"
app webapp com.google.Chrome.app.abcdefghijklmnopabcdefghijklmnop
  window w3 "Meet"
app zoom us.zoom.xos
  window w4 "Zoom Workplace"
app teams com.microsoft.teams2 accessory
  window w5 "Chat"
app calls org.example.Calls
  window w6 "Call"
app facetime com.apple.FaceTime
  window w7 "FaceTime"
app mail com.apple.mail
  window w8 "Private"
app finder com.apple.finder
  window w9 "Private"
app parent ai.corvana.desktop
  window w10 "Settings"
app helper org.example.Helper accessory
  window w11 "Panel"
app nameless none
  window w12 "Private"
front chrome
audio chrome in out
audio safari in out
audio webapp in out
audio zoom in out
audio teams in out
audio calls in out
audio facetime in out
audio mail in out
audio finder in out
audio parent in out
audio helper in out
end 1h
)";

struct DoctorOnMac : SteppedDesktop {
  // Lets the doctor look, from its preparation to what it tells.
  static doctor::Findings visited() {
    std::vector<doctor::Findings> told;
    desktop().recordMessages = true;
    desktop().runUntil = desktop().uptime + 60;
    doctor::visit([&told](const doctor::Findings& findings) { told.push_back(findings); });
    platform::runLoop();
    EXPECT_EQ(told.size(), 1U);
    return told.empty() ? doctor::Findings() : told.front();
  }

  // The applications that messages went to.
  static std::set<std::string> asked() {
    std::set<std::string> applications;
    for (const std::string& message : desktop().messages) {
      const std::size_t key = message.find(' ') + 1;
      applications.insert(message.substr(key, message.find_first_of("/ ", key) - key));
    }
    return applications;
  }
};

TEST_F(DoctorOnMac, OnlyReadsAreSentEachWithATimeOut) {
  play(everyKind);
  (void)visited();
  EXPECT_FALSE(desktop().messages.empty());
  for (const std::string& message : desktop().messages) {
    EXPECT_TRUE(message.starts_with("copy ")) << message;
  }
  EXPECT_EQ(desktop().messagesWithoutTimeout, 0);
}

TEST_F(DoctorOnMac, OfAnApplicationItAsksForItsWindowsAndTheirTitlesAndChildren) {
  play(R"(
app zoom us.zoom.xos
  window home "Zoom Workplace"
    button "Join"
  window meeting "Zoom Meeting"
end 1h
)");
  const doctor::Findings findings = visited();
  EXPECT_EQ(
      desktop().messages,
      (Words{"copy app:101 AXWindows", "copy app:101/home AXTitle", "copy app:101/home AXChildren",
             "copy app:101/meeting AXTitle", "copy app:101/meeting AXChildren"}));
  ASSERT_EQ(findings.applications.size(), 1U);
  const doctor::WindowsFinding windows = findings.applications[0].windows.value();
  ASSERT_EQ(windows.looked.size(), 2U);
  EXPECT_EQ(windows.looked[0].title, "Zoom Workplace");
  EXPECT_EQ(windows.looked[1].title, "Zoom Meeting");
}

TEST_F(DoctorOnMac, NothingStaysBehind) {
  play(everyKind);
  const doctor::Findings findings = visited();
  EXPECT_EQ(findings.applications.size(), 12U);
  EXPECT_EQ(standins::heldReferences(), 0);
  EXPECT_EQ(standins::openPools(), 0U);
}

TEST_F(DoctorOnMac, ItOpensWhatTheMonitorOpensWhereEverybodyIsHeard) {
  play(everyKind);
  (void)visited();
  const std::set<std::string> byDoctor = asked();
  play(everyKind);
  desktop().recordMessages = true;
  for (int i = 0; i < 10; ++i) cycle();
  EXPECT_EQ(byDoctor, asked());
  EXPECT_EQ(byDoctor, (std::set<std::string>{"app:101", "app:102", "app:103", "app:104", "app:105",
                                             "app:106", "app:107"}));
}

TEST_F(DoctorOnMac, WithoutTrustNoMessageIsSent) {
  play("trust no\n" + std::string(everyKind));
  const doctor::Findings findings = visited();
  EXPECT_FALSE(findings.trusted);
  EXPECT_EQ(findings.applications.size(), 12U);
  EXPECT_EQ(desktop().messages, Words());
}

TEST_F(DoctorOnMac, BeforeSystem14Point2TheSoundIsNotKnown) {
  play(everyKind);
  desktop().majorVersion = 14;
  desktop().minorVersion = 1;
  const double before = desktop().uptime;
  const doctor::Findings findings = visited();
  EXPECT_GE(findings.uptime - before, doctor::audioPatience - 1e-6) << "it might have come";
  EXPECT_FALSE(findings.audio.has_value());
  const std::string report = doctor::reportText(findings, doctor::Titles::lengths);
  EXPECT_NE(report.find("audio processes           not known\n"), std::string::npos) << report;
  EXPECT_NE(report.find("    audio                 not known\n"), std::string::npos) << report;
}

TEST_F(DoctorOnMac, AHungApplicationCostsItATimeOut) {
  play(R"(
app chrome com.google.Chrome
  window w "Standup"
end 1h
)");
  desktop().attributeFaults[{"app:101", ""}].delay = 30;
  const doctor::Findings findings = visited();
  ASSERT_EQ(findings.applications.size(), 1U);
  const doctor::WindowsFinding windows = findings.applications[0].windows.value();
  EXPECT_EQ(windows.code, platform::code::cannotComplete);
  ASSERT_EQ(windows.times.seconds.size(), 1U);
  EXPECT_NEAR(windows.times.seconds[0], 0.2, 1e-6);
}

}  // namespace
}  // namespace callmonitor::macos
