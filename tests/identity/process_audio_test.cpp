// Whose sound a process's sound is, and what it says about an unknown application.
#include "identity/process_audio.h"

#include <gtest/gtest.h>

namespace callmonitor {
namespace {

struct FamilyCase {
  std::string_view sentence;
  std::string_view bundle;
  std::string_view family;
};

TEST(ProcessAudio, WebAppsShareTheirBrowsersAudio) {
  const FamilyCase cases[] = {
      {"a Chrome web app", "com.google.Chrome.app.kjgfgldnnfoeklkmfkjfagphfepbbdan",
       "com.google.Chrome"},
      {"an Edge web app", "com.microsoft.edgemac.app.kjgfgldnnfoeklkmfkjfagphfepbbdan",
       "com.microsoft.edgemac"},
      {"whatever follows the prefix", "com.google.Chrome.app.invalid", "com.google.Chrome"},
      {"nothing need follow the prefix", "com.google.Chrome.app.", "com.google.Chrome"},
      {"the prefix ends with a dot", "com.google.Chrome.app", "com.google.Chrome.app"},
      {"a browser itself", "com.google.Chrome", "com.google.Chrome"},
      {"a helper is its own family", "com.google.Chrome.helper", "com.google.Chrome.helper"},
      {"Safari has no web apps", "com.apple.Safari.app.x", "com.apple.Safari.app.x"},
      {"case matters", "com.google.chrome.app.x", "com.google.chrome.app.x"},
      {"any other application", "us.zoom.xos", "us.zoom.xos"},
      {"an empty identifier", "", ""},
  };
  for (const FamilyCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(audioFamily(row.bundle), row.family);
  }
}

TEST(ProcessAudio, OnlySafarisIsNeverAttributed) {
  EXPECT_TRUE(neverAttributed("com.apple.Safari"));
  for (const char* bundle : {"", "com.apple.Safari.app.x", "com.apple.safari", "com.google.Chrome",
                             "com.google.Chrome.app.x", "us.zoom.xos", "com.apple.FaceTime"}) {
    EXPECT_FALSE(neverAttributed(bundle)) << bundle;
  }
}

using Processes = std::optional<std::vector<AudioProcess>>;

struct ClientCase {
  std::string_view sentence;
  std::string_view bundle;
  Processes processes;
  std::optional<ClientAudio> audio;
};

void expectAudio(const std::vector<ClientCase>& cases) {
  for (const ClientCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const std::optional<ClientAudio> audio = clientAudio(row.bundle, row.processes);
    ASSERT_EQ(audio.has_value(), row.audio.has_value());
    if (!audio) continue;
    EXPECT_EQ(audio->input, row.audio->input);
    EXPECT_EQ(audio->output, row.audio->output);
  }
}

const std::string chrome = "com.google.Chrome";

TEST(ProcessAudio, FoldsTheProcessesOfAClient) {
  expectAudio({
      {"the client's own process",
       "us.zoom.xos",
       {{{"us.zoom.xos", true, false}}},
       {{true, false}}},
      {"known and silent", "us.zoom.xos", {{{"us.zoom.xos", false, false}}}, {{false, false}}},
      {"a helper", chrome, {{{chrome + ".helper", false, true}}}, {{false, true}}},
      {"a variant of the helper",
       chrome,
       {{{chrome + ".helper.renderer", true, false}}},
       {{true, false}}},
      {"nothing need follow the helper's dot",
       chrome,
       {{{chrome + ".helper.", true, false}}},
       {{true, false}}},
      {"input of one process and output of another",
       chrome,
       {{{chrome, false, true}, {chrome + ".helper", true, false}}},
       {{true, true}}},
      {"silence of one does not hide another",
       chrome,
       {{{chrome, true, true}, {chrome + ".helper", false, false}}},
       {{true, true}}},
      {"a web app counts its browser and the browser's helper",
       "com.google.Chrome.app.kjgfgldnnfoeklkmfkjfagphfepbbdan",
       {{{chrome, true, false}, {chrome + ".helper", false, true}}},
       {{true, true}}},
      {"other applications do not count",
       "us.zoom.xos",
       {{{"us.zoom.xos", false, false}, {chrome, true, true}}},
       {{false, false}}},
  });
}

TEST(ProcessAudio, OfAClientThatTheListDoesNotKnowIsAbsent) {
  expectAudio({
      {"no list", chrome, std::nullopt, std::nullopt},
      {"an empty list", chrome, {{}}, std::nullopt},
      {"only others", chrome, {{{"us.zoom.xos", true, true}}}, std::nullopt},
      {"other letters behind the browser's name",
       chrome,
       {{{chrome + "helper", true, true}}},
       std::nullopt},
      {"other letters behind the helper's name",
       chrome,
       {{{chrome + ".helpers", true, true}}},
       std::nullopt},
      {"a name in another case", chrome, {{{"com.google.chrome", true, true}}}, std::nullopt},
      {"a name behind a foreign prefix",
       chrome,
       {{{"org.example." + chrome, true, true}}},
       std::nullopt},
      {"a process without a name", chrome, {{{"", true, true}}}, std::nullopt},
      {"a web app's own process does not count for the browser",
       chrome,
       {{{chrome + ".app.kjgfgldnnfoeklkmfkjfagphfepbbdan", true, true}}},
       std::nullopt},
      {"nor for the web app",
       chrome + ".app.kjgfgldnnfoeklkmfkjfagphfepbbdan",
       {{{chrome + ".app.kjgfgldnnfoeklkmfkjfagphfepbbdan", true, true}}},
       std::nullopt},
      {"Safari, even when its processes run",
       "com.apple.Safari",
       {{{"com.apple.Safari", true, true}, {"com.apple.Safari.helper", true, true}}},
       std::nullopt},
  });
}

TEST(ProcessAudio, IsActiveWithInputOrOutput) {
  EXPECT_FALSE((ClientAudio{false, false}.active()));
  EXPECT_TRUE((ClientAudio{true, false}.active()));
  EXPECT_TRUE((ClientAudio{false, true}.active()));
  EXPECT_TRUE((ClientAudio{true, true}.active()));
}

struct GenericCase {
  std::string_view sentence;
  std::string_view bundle;
  bool regular;
  std::optional<ClientAudio> audio;
  bool generic;
};

TEST(ProcessAudio, MakesARegularApplicationWithBothRunningAGenericClient) {
  const std::optional<ClientAudio> both = ClientAudio{true, true};
  const GenericCase cases[] = {
      {"both running", "org.example.talk", true, both, true},
      {"FaceTime may", "com.apple.FaceTime", true, both, true},
      {"an accessory application", "org.example.talk", false, both, false},
      {"an accessory FaceTime", "com.apple.FaceTime", false, both, false},
      {"an empty identifier", "", true, both, false},
      {"this system's own application", "ai.corvana.desktop", true, both, false},
      {"its helper", "ai.corvana.desktop.helper", true, both, false},
      {"whatever begins with its name", "ai.corvana.desktopx", true, both, false},
      {"another application of its makers", "ai.corvana.other", true, both, true},
      {"any other system application", "com.apple.Music", true, both, false},
      {"an extension of FaceTime", "com.apple.FaceTime.helper", true, both, false},
      {"a system prefix is exact", "com.appleseed.talk", true, both, true},
      {"absent audio", "org.example.talk", true, std::nullopt, false},
      {"output without input", "org.example.talk", true, ClientAudio{false, true}, false},
      {"input without output", "org.example.talk", true, ClientAudio{true, false}, false},
      {"silence", "com.apple.FaceTime", true, ClientAudio{}, false},
  };
  for (const GenericCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(genericClient(row.bundle, row.regular, row.audio), row.generic);
  }
}

}  // namespace
}  // namespace callmonitor
