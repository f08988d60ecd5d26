#include "doctor/report_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

#include "doctor/classification.h"
#include "identity/process_audio.h"
#include "text/unicode.h"

namespace callmonitor::doctor {
namespace {

constexpr const char* notKnown = "not known";
constexpr const char* neverOpened = "(never opened by the monitor)";
constexpr const char* timedReads =
    "The reads that are timed are those of an application's list of windows, and of each window's "
    "title and children.\n\n";
// A failure like others to the monitor, and one that a person can do something about: the figure is
// that of the macOS accessibility interface.
constexpr std::int32_t accessibilityDisabled = -25211;
// What the codes mean that say more than that a read failed.
constexpr std::array<std::pair<std::int32_t, const char*>, 7> codeMeanings{
    {{platform::code::success, "success"},
     {platform::code::illegalArgument, "illegal argument"},
     {platform::code::invalidElement, "no longer exists"},
     {platform::code::cannotComplete, "no answer in time"},
     {platform::code::attributeUnsupported, "attribute unsupported"},
     {platform::code::noValue, "no value"},
     {accessibilityDisabled, "accessibility disabled"}}};
// Seconds since 1970 at the end of the year 9999, the last that is written with four digits.
constexpr double endOfTime = 253402300800.0;

// A fact stands in a column of its own behind its name.
std::string fact(int indent, std::string_view name, std::string_view value) {
  constexpr std::size_t column = 26;
  std::string line(static_cast<std::size_t>(indent), ' ');
  line += name;
  line.resize(std::max(column, line.size() + 1), ' ');
  line += value;
  return line + '\n';
}

std::string fixed(double value, int digits) {
  char text[64];
  const int length = std::snprintf(text, sizeof text, "%.*f", digits, value);
  return length > 0 && length < static_cast<int>(sizeof text) ? text : notKnown;
}

std::string milliseconds(double seconds) {
  return fixed(seconds * 1000, 1) + " ms";
}

std::string bundleText(const platform::Application& application) {
  return application.bundleIdentifier ? lineText(*application.bundleIdentifier)
                                      : "no bundle identifier";
}

std::string nameOf(const platform::Application& application) {
  return "pid " + std::to_string(application.pid) + "  " + bundleText(application);
}

std::string audioText(bool input, bool output) {
  if (input && output) return "captures and plays";
  if (input) return "captures";
  return output ? "plays" : "silent";
}

std::string onScreenText(const std::optional<std::vector<platform::OnScreenWindow>>& windows) {
  if (!windows) return notKnown;
  const auto named = std::count_if(windows->begin(), windows->end(), [](const auto& window) {
    return window.name && !window.name->empty();
  });
  const auto normal = std::count_if(windows->begin(), windows->end(),
                                    [](const auto& window) { return window.layer == 0; });
  return std::to_string(windows->size()) + ", " + std::to_string(normal) +
         " of them on the normal layer, " + std::to_string(named) + " with a name";
}

std::string titleText(const WindowFinding& window, Titles titles) {
  if (window.code != platform::code::success) return "title not read: " + codeText(window.code);
  if (!window.title) return "title is no text";
  if (titles == Titles::shown) return "title: " + lineText(*window.title);
  return "title of length " + std::to_string(utf16Length(*window.title));
}

std::string readsText(const ReadTimes& times) {
  const std::optional<double> middle = median(times);
  const std::optional<double> worst = longest(times);
  if (!middle || !worst) return "none";
  return std::to_string(times.seconds.size()) + ", median " + milliseconds(*middle) + ", longest " +
         milliseconds(*worst);
}

std::string windowsText(const WindowsFinding& windows, Titles titles) {
  if (windows.code != platform::code::success) {
    return fact(4, "windows", "not read: " + codeText(windows.code)) +
           fact(4, "reads", readsText(windows.times));
  }
  if (!windows.count) {
    return fact(4, "windows", "the answer is no list of windows") +
           fact(4, "reads", readsText(windows.times));
  }
  std::string text = fact(4, "windows", std::to_string(*windows.count));
  for (std::size_t i = 0; i < windows.looked.size(); ++i) {
    text += fact(6, "window " + std::to_string(i + 1), titleText(windows.looked[i], titles));
  }
  if (const std::size_t left = *windows.count - windows.looked.size(); left > 0) {
    text += fact(6, "not looked at", std::to_string(left) + ", too many or too slow");
  }
  return text + fact(4, "reads", readsText(windows.times));
}

// Why nothing is known of an application's sound, where nothing is.
std::string applicationAudioText(const ApplicationFinding& finding, bool listed) {
  if (finding.audio) return audioText(finding.audio->input, finding.audio->output);
  if (!listed) return notKnown;
  return neverAttributed(finding.application.bundleIdentifier.value_or(""))
             ? "never attributed"
             : "none of its processes is in the list";
}

std::string applicationText(const ApplicationFinding& finding, bool listed, Titles titles) {
  const platform::Application& application = finding.application;
  std::string text = "  " + nameOf(application);
  // A desktop has a hundred helpers, of which there is nothing else to say.
  if (!mayBeOpened(application)) return text + "  " + neverOpened + '\n';
  text += '\n';
  text += fact(4, "regular", application.regular ? "yes" : "no");
  text +=
      fact(4, "launched", application.launchedAt ? timeText(*application.launchedAt) : notKnown);
  text += fact(4, "kind", finding.kind);
  text += fact(4, "audio", applicationAudioText(finding, listed));
  if (finding.windows) return text + windowsText(*finding.windows, titles);
  return text + fact(4, "windows", "not looked at without trust");
}

}  // namespace

std::string codeText(std::int32_t code) {
  const auto* const known = std::find_if(codeMeanings.begin(), codeMeanings.end(),
                                         [code](const auto& each) { return each.first == code; });
  const char* meaning = known == codeMeanings.end() ? "failure" : known->second;
  return std::to_string(code) + " (" + meaning + ")";
}

std::string timeText(double secondsSince1970) {
  if (!(secondsSince1970 >= 0) || secondsSince1970 >= endOfTime) return "not a time";
  using namespace std::chrono;
  const sys_seconds time{seconds(static_cast<std::int64_t>(secondsSince1970))};
  const auto day = floor<days>(time);
  const year_month_day date{day};
  const hh_mm_ss clock{time - day};
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d UTC",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

std::string lineText(std::string_view text) {
  return validUtf8(text) ? controlsEscaped(text) : "(not well-formed UTF-8)";
}

std::string reportText(const Findings& findings, Titles titles) {
  std::string text = "What call-monitor can see of this desktop. Nothing was changed to see it.\n";
  text += titles == Titles::shown
              ? "Window titles are shown.\n"
              : "Window titles are left out, their lengths (in UTF-16 units) stand for them; "
                "--titles shows them.\n";
  text += timedReads;
  text += fact(0, "accessibility trusted", findings.trusted ? "yes" : "no, so no window is read");
  text += fact(0, "uptime", fixed(findings.uptime, 1) + " s");
  text += fact(0, "wall clock", timeText(findings.wallClock));
  text += fact(0, "application in front", findings.front ? nameOf(*findings.front) : notKnown);
  text += fact(0, "windows on the screen", onScreenText(findings.onScreen));
  text += fact(0, "audio processes",
               findings.audio ? std::to_string(findings.audio->size()) : notKnown);
  for (const platform::AudioProcess& process :
       findings.audio.value_or(std::vector<AudioProcess>())) {
    text += "  " + (process.bundle.empty() ? "no bundle identifier" : lineText(process.bundle)) +
            ": " + audioText(process.input, process.output) + '\n';
  }
  const std::size_t applications = findings.applications.size();
  text += fact(0, "applications", applications > 0 ? std::to_string(applications) : "none found");
  for (const ApplicationFinding& finding : findings.applications) {
    text += applicationText(finding, findings.audio.has_value(), titles);
  }
  return text;
}

}  // namespace callmonitor::doctor
