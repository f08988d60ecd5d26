#include "scenarios/story.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sstream>

namespace callmonitor::scenarios {
namespace {

using Json = nlohmann::json;

constexpr std::size_t timeWidth = 16;
constexpr std::size_t countWidth = 5;

// What one record says. Records of consecutive cycles with the same words are told once.
struct Saying {
  std::string start;                     // the words before the sequence
  std::string rest;                      // and after it
  std::optional<std::int64_t> sequence;  // of an observation
};

// A saying in a run of consecutive cycles.
struct Run {
  Saying saying;
  std::int64_t firstTime = 0;  // milliseconds
  std::int64_t lastTime = 0;
  std::int64_t lastSequence = 0;
  std::size_t lastCycle = 0;
  int times = 1;
};

struct Teller {
  double startWallClock = 0;
  std::map<std::string, std::string> sessions;
  std::map<std::string, std::string> lobbies;
  std::vector<Run> runs;
  std::size_t cycle = 0;
};

// The short name of an identifier, given at its first appearance.
std::string shortName(std::map<std::string, std::string>& names, const std::string& identifier,
                      char letter) {
  return names.try_emplace(identifier, letter + std::to_string(names.size() + 1)).first->second;
}

// A key with its random part replaced.
std::string shortKey(Teller& teller, const std::string& key, const std::string& session) {
  const std::size_t native = key.find(":native-");
  if (native != std::string::npos) {
    const bool own = key.substr(native + 8) == session;
    return key.substr(0, native + 8) + (own ? teller.sessions.at(session) : "FOREIGN");
  }
  const std::size_t lobby = key.find(":lobby-");
  if (lobby == std::string::npos) return key;
  return key.substr(0, lobby + 7) + shortName(teller.lobbies, key.substr(lobby + 7), 'L');
}

std::string quoted(const std::string& text) {
  return Json(text).dump();
}

// The names of those flags that are true, each with a blank in front.
std::string trueFlags(const Json& record, std::initializer_list<const char*> names) {
  std::string words;
  for (const char* name : names) {
    if (record.value(name, false)) words += std::string(" ") + name;
  }
  return words;
}

std::string listed(const Json& record, const char* name, const char* word) {
  const auto found = record.find(name);
  if (found == record.end() || !found->is_array()) return "";
  std::string words = std::string(" ") + word + "=";
  for (const Json& entry : *found) {
    if (words.back() != '=') words += ',';
    words += entry.get<std::string>();
  }
  return words;
}

std::string bundleOf(const Json& record) {
  return record.contains("applicationBundleId")
             ? " " + record["applicationBundleId"].get<std::string>()
             : "";
}

Saying observation(Teller& teller, const Json& record) {
  const std::string session = record.at("sessionId");
  const std::string key = record.at("callKey");
  const std::string provider = record.at("provider");
  Saying saying;
  saying.start =
      shortName(teller.sessions, session, 'S') + " " + record.at("state").get<std::string>();
  saying.sequence = record.at("sequence").get<std::int64_t>();
  saying.rest = shortKey(teller, key, session) + " " + quoted(record.at("title"));
  if (!key.starts_with(provider + ":")) saying.rest += " provider=" + provider;
  if (record.at("mediaActive").get<bool>()) saying.rest += " media";
  saying.rest += bundleOf(record);
  if (record.contains("screenWindowId")) {
    saying.rest += " window=" + record["screenWindowId"].dump();
  }
  return saying;
}

Saying clientScan(const Json& record) {
  std::string words = "scan " + record.at("stage").get<std::string>();
  if (record.contains("provider")) words += " " + record["provider"].get<std::string>();
  words += trueFlags(record, {"audio", "video", "join", "start", "previewOption", "lobby",
                              "deadline", "truncated"});
  if (record.value("failedNodes", 0) > 0) words += " failedNodes=" + record["failedNodes"].dump();
  words += listed(record, "failedAttributes", "failed");
  words += listed(record, "failedControlHints", "hints");
  return {words, "", {}};
}

Saying client(Teller& teller, const Json& record) {
  std::string words = "client " + shortKey(teller, record.at("key"), "");
  const std::string provider = record.at("provider");
  if (!record["key"].get<std::string>().starts_with(provider + ":")) {
    words += " provider=" + provider;
  }
  if (record.at("mediaActive").get<bool>()) words += " media";
  if (record.at("lobby").get<bool>()) words += " lobby";
  return {words + " pid=" + record.at("pid").dump() + bundleOf(record), "", {}};
}

Saying sayingOf(Teller& teller, const Json& record) {
  const std::string type = record.value("type", "");
  if (type.empty()) return observation(teller, record);
  if (type == "client-scan") return clientScan(record);
  if (type == "client") return client(teller, record);
  if (type == "health")
    return {record.at("trusted").get<bool>() ? "trusted" : "not trusted", "", {}};
  return {"WRONG: a record of type " + type, "", {}};
}

void say(Teller& teller, const Saying& saying, std::int64_t time) {
  for (Run& run : teller.runs) {
    const bool goesOn = run.lastCycle + 1 == teller.cycle && run.saying.start == saying.start &&
                        run.saying.rest == saying.rest;
    if (!goesOn || (saying.sequence && *saying.sequence != run.lastSequence + 1)) continue;
    run.lastTime = time;
    run.lastSequence = saying.sequence.value_or(0);
    run.lastCycle = teller.cycle;
    ++run.times;
    return;
  }
  teller.runs.push_back({saying, time, time, saying.sequence.value_or(0), teller.cycle});
}

// Says everything of one cycle, whose last record is its health record.
void tellCycle(Teller& teller, const std::vector<Json>& records) {
  const double milliseconds =
      records.back().at("observedAt").get<double>() - teller.startWallClock * 1000;
  const std::int64_t time = std::llround(milliseconds);
  ++teller.cycle;
  for (const Json& record : records) {
    if (record.at("version") != 1)
      say(teller, {"WRONG: a record of another version", "", {}}, time);
    say(teller, sayingOf(teller, record), time);
  }
}

std::string secondsText(std::int64_t milliseconds) {
  char text[40];
  std::snprintf(text, sizeof text, "%.3f", static_cast<double>(milliseconds) / 1000);
  std::string seconds = text;
  seconds.erase(seconds.find_last_not_of('0') + 1);
  if (seconds.back() == '.') seconds.pop_back();
  return seconds + "s";
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size() + 1, width), ' ');
  return text;
}

std::string told(const Run& run) {
  std::string time = secondsText(run.firstTime);
  if (run.times > 1) time += ".." + secondsText(run.lastTime);
  std::string line = padded(time, timeWidth) +
                     padded(run.times > 1 ? std::to_string(run.times) + "x" : "", countWidth) +
                     run.saying.start;
  if (run.saying.sequence) {
    line += " " + std::to_string(*run.saying.sequence);
    if (run.times > 1) line += ".." + std::to_string(run.lastSequence);
    line += " " + run.saying.rest;
  }
  return line;
}

}  // namespace

std::vector<std::string> story(const std::vector<std::string>& stream, double startWallClock) {
  Teller teller;
  teller.startWallClock = startWallClock;
  std::vector<Json> cycle;
  std::vector<std::string> wrong;
  for (const std::string& line : stream) {
    cycle.push_back(Json::parse(line, nullptr, /*allow_exceptions=*/false));
    if (!cycle.back().is_object()) {
      wrong.push_back("WRONG: not a record: " + line);
      cycle.pop_back();
    } else if (cycle.back().value("type", "") == "health") {
      tellCycle(teller, cycle);
      cycle.clear();
    }
  }
  std::vector<std::string> lines;
  for (const Run& run : teller.runs) lines.push_back(told(run));
  lines.insert(lines.end(), wrong.begin(), wrong.end());
  if (!cycle.empty()) lines.emplace_back("WRONG: the last cycle has no health record");
  return lines;
}

std::vector<std::string> tellingLines(std::string_view text) {
  std::vector<std::string> lines;
  std::istringstream stream{std::string(text)};
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line);
    std::string telling;
    for (std::string word; words >> word;) telling += (telling.empty() ? "" : " ") + word;
    if (!telling.empty() && telling.front() != '#') lines.push_back(telling);
  }
  return lines;
}

}  // namespace callmonitor::scenarios
