// What a fault of the frameworks does to the stream, compared with what it should do.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "macos/stepped_desktop.h"

namespace callmonitor::macos {

// A window with a call. The labels are descriptions, so that titles can fail without them.
inline const std::string meetWindow = R"(
app chrome com.google.Chrome
  window w "Standup"
    page p https://meet.google.com/abc-defg-hij
      button leave description="Leave call"
      button description="Turn off microphone"
      button description="Turn off camera"
)";
// The same in front, and heard.
inline const std::string meetCall = meetWindow + R"(
front chrome
audio com.google.Chrome.helper in out
end 1h
)";

// What is told of its call.
inline constexpr const char* joined = "joined media \"Standup\" window=1";
inline constexpr const char* joinedNowhere = "joined media \"Standup\"";
inline constexpr const char* unknown = "unknown \"Standup\"";

// What a cycle says of calls, one after the other.
inline std::string calls(const std::vector<Json>& records) {
  std::string words;
  for (const Json& record : support::ofKind(records, "observation")) {
    if (!words.empty()) words += ", ";
    words += record["state"].get<std::string>();
    if (record["mediaActive"].get<bool>()) words += " media";
    words += " " + record["title"].dump();
    if (record.contains("screenWindowId")) words += " window=" + record["screenWindowId"].dump();
  }
  return words;
}

inline std::string stage(const std::vector<Json>& records) {
  const auto scans = support::ofKind(records, "client-scan");
  return scans.size() == 1 ? scans.front()["stage"].get<std::string>() : "not one scan";
}

// The failures that the one scan of a cycle names.
inline std::vector<std::string> failures(const std::vector<Json>& records) {
  const auto scans = support::ofKind(records, "client-scan");
  if (scans.size() != 1 || !scans.front().contains("failedAttributes")) return {};
  const Json& list = scans.front()["failedAttributes"];
  return list.is_array() ? list.get<std::vector<std::string>>() : std::vector<std::string>();
}

struct FaultEffects : SteppedDesktop {
  struct Expected {
    std::string calls;
    std::string stage = "complete";
    std::vector<std::string> failures = {};
    bool trusted = true;
  };

  void expectCycle(const Expected& expected, const std::string& when) {
    const std::vector<Json> records = cycle();
    EXPECT_EQ(calls(records), expected.calls) << when;
    EXPECT_EQ(stage(records), expected.stage) << when;
    EXPECT_EQ(failures(records), expected.failures) << when;
    const auto health = support::ofKind(records, "health");
    ASSERT_EQ(health.size(), 1U) << when;
    EXPECT_EQ(health.front()["trusted"], expected.trusted) << when;
  }

  // Two cycles as they should be, two with the fault, two as they should be again.
  void expectEffect(const std::string& desktopText, const Expected& sound,
                    const std::string& sentence, const std::function<void()>& begin,
                    const std::function<void()>& end, const Expected& faulty) {
    SCOPED_TRACE(sentence);
    play(desktopText);
    for (int i = 0; i < 2; ++i) expectCycle(sound, "before");
    begin();
    for (int i = 0; i < 2; ++i) expectCycle(faulty, "meanwhile");
    end();
    for (int i = 0; i < 2; ++i) expectCycle(sound, "afterwards");
  }
};

}  // namespace callmonitor::macos
