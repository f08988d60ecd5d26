// What an application is called, and whose windows are opened.
#include "doctor/classification.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support/desktop_builder.h"

namespace callmonitor::doctor {
namespace {

using platform::Application;
using AudioList = std::optional<std::vector<AudioProcess>>;

const AudioList unheard;
const AudioList heardNobody = AudioList(std::in_place);
constexpr const char* client = "org.example.Calls";

AudioList heard(const std::string& bundle, bool input, bool output) {
  return AudioList({{bundle, input, output}});
}

struct Row {
  const char* sentence;
  std::optional<std::string> bundle;
  bool regular;
  AudioList audio;
  std::string kind;
  bool opened;
};

TEST(Classification, NamesEveryApplicationByTheRulesOfTheMonitor) {
  const std::string undecided =
      "other (a generic candidate if it captures and plays, which is not known)";
  const std::vector<Row> rows{
      {"a browser", "com.google.Chrome", true, unheard, "browser", true},
      {"a browser that is no regular application", "com.apple.Safari", false, unheard, "browser",
       true},
      {"a browser that captures and plays", "com.microsoft.edgemac", true,
       heard("com.microsoft.edgemac", true, true), "browser", true},
      {"a browser's web app", support::webApp, true, heardNobody, "web app", true},
      {"what only looks like a web app", "com.google.Chrome.app.invalid", true, heardNobody,
       "other", true},
      {"the Zoom client", "us.zoom.xos", true, unheard, "native client zoom", true},
      {"the Teams client", "com.microsoft.teams2", true, unheard, "native client teams", true},
      {"the Webex client", "com.cisco.webexmeetingsapp", false, unheard, "native client webex",
       true},
      {"an unknown one that captures and plays", client, true, heard(client, true, true),
       "generic candidate", true},
      {"an unknown one that plays", client, true, heard(client, false, true), "other", true},
      {"an unknown one that makes no sound", client, true, heardNobody, "other", true},
      {"an unknown one, where sound is not known", client, true, unheard, undecided, true},
      {"a helper that captures and plays", client, false, heard(client, true, true), "other",
       false},
      {"a helper, where sound is not known", client, false, unheard, "other", false},
      {"one of the system's, where sound is not known", "com.apple.finder", true, unheard, "other",
       false},
      {"one of the system's that captures and plays", "com.apple.mail", true,
       heard("com.apple.mail", true, true), "other", false},
      {"FaceTime, where sound is not known", "com.apple.FaceTime", true, unheard, undecided, true},
      {"this system's own application", "ai.corvana.desktop", true, unheard, "other", false},
      {"one without bundle identifier, where sound is not known", std::nullopt, true, unheard,
       "other", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.sentence);
    const Application application{42, 1.0, row.bundle, row.regular};
    EXPECT_EQ(kindOf(application, row.audio), row.kind);
    EXPECT_EQ(mayBeOpened(application), row.opened);
  }
}

}  // namespace
}  // namespace callmonitor::doctor
