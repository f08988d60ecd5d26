// The words of the report, what they keep to themselves, and what was asked for.
#include "doctor/report_text.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "doctor/command_line.h"

namespace callmonitor::doctor {
namespace {

namespace code = platform::code;

// A report holds this line, however far its columns are apart.
bool tells(const std::string& report, const std::string& wanted) {
  std::string squeezed;
  for (const char each : report) {
    const bool blank =
        each == ' ' && (squeezed.empty() || squeezed.back() == ' ' || squeezed.back() == '\n');
    if (!blank) squeezed += each;
  }
  return ("\n" + squeezed).find("\n" + wanted + "\n") != std::string::npos;
}

Findings oneApplication(const WindowsFinding& windows) {
  Findings findings;
  findings.trusted = true;
  findings.applications = {{{42, 1.0, "us.zoom.xos", true}, "native client zoom", {}, windows}};
  return findings;
}

TEST(ReportText, TellsTheFactsOfTheDesktop) {
  Findings findings;
  findings.trusted = true;
  findings.uptime = 77.25;
  findings.wallClock = 1750000000.5;
  findings.front = platform::Application{42, 1.0, "us.zoom.xos", true};
  findings.onScreen = {{42, "Zoom Meeting", 0, 7}, {42, std::nullopt, 0, 8}, {43, "", 25, 9}};
  findings.audio = {{"us.zoom.xos", true, true},
                    {"org.a", true, false},
                    {"org.b", false, true},
                    {"", false, false}};
  const std::string report = reportText(findings, Titles::lengths);
  for (const char* line :
       {"accessibility trusted yes", "wall clock 2025-06-15 15:06:40 UTC",
        "application in front pid 42 us.zoom.xos",
        "windows on the screen 3, 2 of them on the normal layer, 1 with a name",
        "audio processes 4", "us.zoom.xos: captures and plays", "org.a: captures", "org.b: plays",
        "no bundle identifier: silent", "applications none found"}) {
    EXPECT_TRUE(tells(report, line)) << line << " is not in\n" << report;
  }
}

TEST(ReportText, SaysWhatIsNotKnown) {
  Findings findings;
  findings.applications = {{{42, {}, "us.zoom.xos", false}, "native client zoom", {}, {}}};
  const std::string report = reportText(findings, Titles::lengths);
  for (const char* line :
       {"accessibility trusted no, so no window is read", "application in front not known",
        "windows on the screen not known", "audio processes not known", "applications 1",
        "pid 42 us.zoom.xos", "regular no", "launched not known", "kind native client zoom",
        "audio not known", "windows not looked at without trust"}) {
    EXPECT_TRUE(tells(report, line)) << line << " is not in\n" << report;
  }
}

TEST(ReportText, AnApplicationThatIsNeverOpenedTakesOneLine) {
  for (const bool trusted : {false, true}) {
    Findings findings;
    findings.trusted = trusted;
    findings.applications = {{{42, 1.0, "org.example.Helper", false}, "other", {}, {}},
                             {{43, 1.0, "com.apple.mail", true}, "other", {}, {}},
                             {{44, 1.0, {}, true}, "other", {}, {}}};
    const std::string report = reportText(findings, Titles::lengths);
    const std::string expected =
        "applications              3\n"
        "  pid 42  org.example.Helper  (never opened by the monitor)\n"
        "  pid 43  com.apple.mail  (never opened by the monitor)\n"
        "  pid 44  no bundle identifier  (never opened by the monitor)\n";
    EXPECT_TRUE(report.ends_with(expected)) << report;
  }
}

TEST(ReportText, SaysWhyASoundIsNotTold) {
  struct Row {
    const char* sentence;
    const char* bundle;
    std::optional<std::vector<platform::AudioProcess>> processes;
    const char* line;
  };
  const std::vector<platform::AudioProcess> others{{"org.a", true, true}};
  for (const Row& row : std::vector<Row>{
           {"there is no list", "com.google.Chrome", {}, "audio not known"},
           {"there is no list, and Safari", "com.apple.Safari", {}, "audio not known"},
           {"a list of others", "com.google.Chrome", others,
            "audio none of its processes is in the list"},
           {"an empty list",
            "com.google.Chrome",
            {{}},
            "audio none of its processes is in the list"},
           {"a list, and Safari", "com.apple.Safari", others, "audio never attributed"}}) {
    SCOPED_TRACE(row.sentence);
    Findings findings;
    findings.audio = row.processes;
    findings.applications = {{{42, 1.0, row.bundle, true}, "browser", {}, {}}};
    const std::string report = reportText(findings, Titles::lengths);
    EXPECT_TRUE(tells(report, row.line)) << report;
  }
}

TEST(ReportText, SaysWhichReadsAreTimed) {
  EXPECT_TRUE(tells(reportText({}, Titles::lengths),
                    "The reads that are timed are those of an application's list of windows, and "
                    "of each window's title and children."));
}

TEST(ReportText, TitlesAreShownOnlyWhereTheyWereAskedFor) {
  WindowsFinding windows;
  windows.count = 2;
  windows.looked = {{code::success, "Private"}, {code::success, ""}};
  windows.times.seconds = {0.001, 0.0025, 0.0025};
  const Findings findings = oneApplication(windows);
  const std::string lengths = reportText(findings, Titles::lengths);
  EXPECT_EQ(lengths.find("Private"), std::string::npos);
  EXPECT_NE(lengths.find("Window titles are left out"), std::string::npos);
  EXPECT_TRUE(tells(lengths, "window 1 title of length 7")) << lengths;
  EXPECT_TRUE(tells(lengths, "window 2 title of length 0")) << lengths;
  EXPECT_TRUE(tells(lengths, "reads 3, median 2.5 ms, longest 2.5 ms")) << lengths;
  const std::string shown = reportText(findings, Titles::shown);
  EXPECT_NE(shown.find("Window titles are shown"), std::string::npos);
  EXPECT_TRUE(tells(shown, "window 1 title: Private")) << shown;
}

TEST(ReportText, TheNamesOfWindowsOnTheScreenAreNeverShown) {
  Findings findings;
  findings.onScreen = {{42, "Private", 0, 7}};
  for (const Titles titles : {Titles::lengths, Titles::shown}) {
    EXPECT_EQ(reportText(findings, titles).find("Private"), std::string::npos);
  }
}

TEST(ReportText, AFailedReadIsToldWithItsCode) {
  WindowsFinding windows;
  windows.count = 4;
  windows.looked = {{code::cannotComplete, {}}, {code::success, {}}};
  const std::string report = reportText(oneApplication(windows), Titles::shown);
  for (const char* line :
       {"windows 4", "window 1 title not read: -25204 (no answer in time)",
        "window 2 title is no text", "not looked at 2, too many or too slow", "reads none"}) {
    EXPECT_TRUE(tells(report, line)) << line << " is not in\n" << report;
  }
  WindowsFinding unread;
  unread.code = code::failure;
  EXPECT_TRUE(tells(reportText(oneApplication(unread), Titles::shown),
                    "windows not read: -25200 (failure)"));
  EXPECT_TRUE(tells(reportText(oneApplication({}), Titles::shown),
                    "windows the answer is no list of windows"));
}

TEST(CodeText, SaysWhatACodeMeans) {
  struct Row {
    std::int32_t code;
    const char* text;
  };
  for (const Row& row : std::vector<Row>{{0, "0 (success)"},
                                         {-25200, "-25200 (failure)"},
                                         {-25201, "-25201 (illegal argument)"},
                                         {-25202, "-25202 (no longer exists)"},
                                         {-25204, "-25204 (no answer in time)"},
                                         {-25205, "-25205 (attribute unsupported)"},
                                         {-25212, "-25212 (no value)"},
                                         {-25211, "-25211 (accessibility disabled)"},
                                         {-25208, "-25208 (failure)"}}) {
    EXPECT_EQ(codeText(row.code), row.text);
  }
}

TEST(TimeText, IsUtcToTheSecond) {
  struct Row {
    double seconds;
    const char* text;
  };
  for (const Row& row : std::vector<Row>{{0, "1970-01-01 00:00:00 UTC"},
                                         {951782399.999, "2000-02-28 23:59:59 UTC"},
                                         {951782400, "2000-02-29 00:00:00 UTC"},
                                         {253402300799.0, "9999-12-31 23:59:59 UTC"},
                                         {253402300800.0, "not a time"},
                                         {-1, "not a time"},
                                         {std::numeric_limits<double>::quiet_NaN(), "not a time"},
                                         {std::numeric_limits<double>::infinity(), "not a time"}}) {
    EXPECT_EQ(timeText(row.seconds), row.text);
  }
}

TEST(LineText, NothingEndsTheLineOrTalksToATerminal) {
  struct Row {
    const char* sentence;
    std::string text;
    std::string line;
  };
  for (const Row& row : std::vector<Row>{
           {"letters of every length", "a\u00E9\u4F1A\U0001F4DE", "a\u00E9\u4F1A\U0001F4DE"},
           {"a line feed", "a\nb", "a\\u{A}b"},
           {"an escape sequence", "\x1B[2J", "\\u{1B}[2J"},
           {"delete", "\x7F", "\\u{7F}"},
           {"a control of one byte more", "\u009B", "\\u{9B}"},
           {"the first letter after those", "\u00A0", "\u00A0"},
           {"a line separator", "\u2028", "\\u{2028}"},
           {"a turn of direction", "\u202Eabc\u2069", "\\u{202E}abc\\u{2069}"},
           {"the mark of Arabic letters", "a\u061Cb", "a\\u{61C}b"},
           {"marks of direction", "\u200Ea\u200F", "\\u{200E}a\\u{200F}"},
           {"what joins letters", "\u200D", "\u200D"},
           {"no UTF-8", "a\xFF", "(not well-formed UTF-8)"}}) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(lineText(row.text), row.line);
  }
}

TEST(Arguments, AreTitlesAndHelpAndNothingElse) {
  struct Row {
    std::vector<std::string> words;
    bool known;
    bool titles;
    bool help;
  };
  for (const Row& row : std::vector<Row>{{{}, true, false, false},
                                         {{"--titles"}, true, true, false},
                                         {{"--help"}, true, false, true},
                                         {{"--titles", "--help"}, true, true, true},
                                         {{"--Titles"}, false, false, false},
                                         {{"--titles", "x"}, false, false, false},
                                         {{""}, false, false, false}}) {
    SCOPED_TRACE(testing::PrintToString(row.words));
    const std::optional<Request> request = requestIn(row.words);
    ASSERT_EQ(request.has_value(), row.known);
    if (!request) continue;
    EXPECT_EQ(request->titles, row.titles);
    EXPECT_EQ(request->help, row.help);
  }
}

}  // namespace
}  // namespace callmonitor::doctor
