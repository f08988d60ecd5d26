#include "platform/scenario/loader.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "platform/scenario/change_lines.h"
#include "platform/scenario/schedule.h"
#include "platform/scenario/world.h"

namespace callmonitor::scenario {
namespace {

// Seconds. A shorter period means nothing to a monitor that looks once a second, and one that is
// lost when it is added to the time of day would never end.
constexpr double shortestPeriod = 0.001;

// A whole file while it is read.
struct File {
  Reading reading;
  const ReadIncluded& readIncluded;
  std::set<std::string> included;
  Scenario scenario;
  bool whySaid = false;
  std::string endOrigin;  // empty while the end is not known
};

bool fail(File& file, const Line& line, const std::string& reason) {
  return file.reading.problem.at(line.origin, reason);
}

bool readWhy(File& file, const Line& line) {
  if (line.words.size() != 2 || !line.words[1].quoted || line.words[1].text.empty()) {
    return fail(file, line, "write: why \"ONE SENTENCE\"");
  }
  if (file.whySaid) return fail(file, line, "why was said above");
  file.whySaid = true;
  file.scenario.why = line.words[1].text;
  return true;
}

bool readEnd(File& file, const Line& line) {
  const auto end = line.words.size() == 2 ? duration(line.words[1].text) : std::nullopt;
  if (!end || *end <= 0) return fail(file, line, "end when? (for example: end 10s)");
  if (!file.endOrigin.empty()) return fail(file, line, "the end was said above");
  file.endOrigin = line.origin;
  file.scenario.end = *end;
  return true;
}

bool readDefinition(File& file, const Line& line) {
  if (line.words.size() < 2 || !validName(line.words[1].text)) {
    return fail(file, line, "write: define NAME [PARAMETER ...]");
  }
  if (line.below.empty()) return fail(file, line, "nothing stands below the definition");
  Fragment fragment{{}, line.below};
  for (std::size_t i = 2; i < line.words.size(); ++i) {
    if (!line.words[i].bare() || !validName(line.words[i].text)) {
      return fail(file, line, "\"" + line.words[i].text + "\" is no parameter's name");
    }
    fragment.parameters.push_back(line.words[i].text);
  }
  if (!file.reading.fragments.try_emplace(line.words[1].text, std::move(fragment)).second) {
    return fail(file, line, "\"" + line.words[1].text + "\" is defined above");
  }
  return true;
}

// `at TIME:` and `at TIME every TIME [until TIME]:`
bool readStep(File& file, const Line& line) {
  const std::string form = "write: at 3.5s: or: at 10s every 60s until 5m:";
  std::vector<std::string> words;
  for (const Word& word : line.words) words.push_back(word.text);
  if (words.size() < 2 || !words.back().ends_with(':')) return fail(file, line, form);
  words.back().pop_back();
  if (words.back().empty()) words.pop_back();

  Step step;
  step.origin = line.origin;
  std::vector<double> times;
  for (std::size_t i = 1; i < words.size(); i += 2) {
    const auto time = duration(words[i]);
    if (!time) return fail(file, line, "\"" + words[i] + "\" is no time");
    times.push_back(*time);
  }
  const bool repeated = words.size() >= 4 && words[2] == "every";
  const bool bounded = words.size() == 6 && words[4] == "until";
  if (words.size() != 2 && !(repeated && (words.size() == 4 || bounded))) {
    return fail(file, line, form);
  }
  step.at = times[0];
  if (repeated) {
    if (times[1] < shortestPeriod) return fail(file, line, "a step that repeats takes its time");
    step.every = times[1];
    step.until = bounded ? times[2] : -1;  // the end, which may not be known yet
  }
  if (line.below.empty()) return fail(file, line, "nothing happens then");
  if (!readChanges(file.reading, line.below, {}, step.changes)) return false;
  file.scenario.steps.push_back(std::move(step));
  return true;
}

bool readTopLines(File& file, const std::vector<Line>& lines);

bool readInclude(File& file, const Line& line) {
  if (line.words.size() != 2) return fail(file, line, "write: include FILE");
  const std::string& name = line.words[1].text;
  if (!file.included.insert(name).second) return true;
  const std::optional<std::string> text = file.readIncluded(name);
  if (!text) return fail(file, line, "\"" + name + "\" cannot be read");
  const auto lines = readLines(*text, name, file.reading.problem);
  return lines && readTopLines(file, *lines);
}

bool readTopLine(File& file, const Line& line) {
  using ReadTop = bool (*)(File&, const Line&);
  struct Form {
    ReadTop read;
    bool linesBelow;
  };
  static const std::map<std::string, Form, std::less<>> forms{
      {"why", {readWhy, false}},          {"end", {readEnd, false}},
      {"define", {readDefinition, true}}, {"at", {readStep, true}},
      {"include", {readInclude, false}},
  };
  const auto form = forms.find(line.verb());
  if (form == forms.end()) {
    return readChanges(file.reading, {line}, {}, file.scenario.opening);
  }
  if (!form->second.linesBelow && !line.below.empty()) {
    return fail(file, line.below.front(), "nothing may stand below " + line.verb());
  }
  return form->second.read(file, line);
}

bool readTopLines(File& file, const std::vector<Line>& lines) {
  for (const Line& line : lines) {
    if (!readTopLine(file, line)) return false;
  }
  return true;
}

// Whether every step can happen before the end.
bool checkTimes(File& file) {
  Problem& problem = file.reading.problem;
  if (file.endOrigin.empty()) {
    problem.text = "the scenario has no end (for example: end 10s)";
    return false;
  }
  for (Step& step : file.scenario.steps) {
    if (step.every && step.until < 0) step.until = file.scenario.end;
    if (step.at >= file.scenario.end) {
      return problem.at(step.origin, "this never happens, the scenario ends before");
    }
  }
  return true;
}

// Carries everything out once.
bool rehearse(const Scenario& scenario, Problem& problem) {
  World world;
  for (const Change& change : scenario.opening) {
    if (const auto reason = apply(world, change)) return problem.at(change.origin, *reason);
  }
  Schedule schedule = scheduleOf(scenario);
  while (const auto due = takeDue(schedule, scenario, scenario.end)) {
    world.seconds = due->at;
    for (const Change& change : due->step->changes) {
      if (const auto reason = apply(world, change)) return problem.at(change.origin, *reason);
    }
    world.touched.clear();
  }
  return true;
}

}  // namespace

Loaded parseScenario(std::string_view text, const ReadIncluded& readIncluded) {
  File file{{}, readIncluded, {}, {}, false, {}};
  const auto lines = readLines(text, "", file.reading.problem);
  if (!lines || !readTopLines(file, *lines) || !checkTimes(file) ||
      !rehearse(file.scenario, file.reading.problem)) {
    return {std::nullopt, file.reading.problem.text};
  }
  return {std::move(file.scenario), ""};
}

Loaded loadScenario(const std::string& path) {
  const auto readFile = [](const std::filesystem::path& file) -> std::optional<std::string> {
    // Not the streams of C++: to some of them a read that failed, as of a directory, is an end.
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rb"),
                                                                 std::fclose);
    if (!stream) return std::nullopt;
    std::string text;
    std::array<char, 4096> block{};
    while (const std::size_t count = std::fread(block.data(), 1, block.size(), stream.get())) {
      text.append(block.data(), count);
    }
    return std::ferror(stream.get()) != 0 ? std::nullopt : std::optional(std::move(text));
  };
  const auto text = readFile(path);
  if (!text) return {std::nullopt, "the file cannot be read"};
  const std::filesystem::path directory = std::filesystem::path(path).parent_path();
  return parseScenario(*text, [&](const std::string& name) { return readFile(directory / name); });
}

}  // namespace callmonitor::scenario
