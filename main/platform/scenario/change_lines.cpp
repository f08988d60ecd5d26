#include "platform/scenario/change_lines.h"

#include <limits>
#include <map>
#include <string_view>
#include <utility>

namespace callmonitor::scenario {
namespace {

using Words = std::vector<Word>;

// One line of a change while it is read.
struct Reader {
  Reading& reading;
  const Line& line;
  const Place& place;
  std::vector<Change>& changes;

  [[nodiscard]] const Words& words() const { return line.words; }
  [[nodiscard]] Change change(Verb verb, std::string target = "") const {
    Change made;
    made.origin = line.origin;
    made.verb = verb;
    made.target = std::move(target);
    made.element.origin = line.origin;
    return made;
  }
  bool fail(const std::string& reason) const { return reading.problem.at(line.origin, reason); }
  [[nodiscard]] bool add(Change made) const {
    changes.push_back(std::move(made));
    return true;
  }
};

bool readProcessIdentifier(const Reader& reader, const Word& word, ApplicationDescription& into) {
  const auto pid = wholeNumber(word.text);
  if (!pid || *pid < 1 || *pid > std::numeric_limits<std::int32_t>::max()) {
    return reader.fail("\"" + word.text + "\" is no process id");
  }
  into.pid = static_cast<std::int32_t>(*pid);
  return true;
}

bool readLaunchTime(const Reader& reader, const Word& word, ApplicationDescription& into) {
  if (word.text == "absent") {
    into.withoutLaunchTime = true;
    return true;
  }
  into.launchedAt = decimalNumber(word.text);
  return into.launchedAt || reader.fail("a launch time is absent or in seconds since 1970");
}

// `app NAME BUNDLE ...` and `relaunch NAME ...`: what follows the name.
bool readApplication(const Reader& reader, std::size_t from, Change& change) {
  ApplicationDescription& application = change.application;
  for (std::size_t i = from; i < reader.words().size(); ++i) {
    const Word& word = reader.words()[i];
    if (word.key == "pid") {
      if (!readProcessIdentifier(reader, word, application)) return false;
    } else if (word.key == "launched") {
      if (!readLaunchTime(reader, word, application)) return false;
    } else if (word.bare() && word.text == "accessory") {
      application.regular = false;
    } else {
      return reader.fail("\"" + word.text + "\" means nothing here");
    }
  }
  return readElements(reader.reading, reader.line.below, reader.place, change.element);
}

bool readStart(const Reader& reader) {
  if (reader.words().size() < 3) return reader.fail("write: app NAME BUNDLE");
  Change change = reader.change(Verb::start, reader.words()[1].text);
  if (!validName(change.target)) return reader.fail("\"" + change.target + "\" is no name");
  const Word& bundle = reader.words()[2];
  if (!bundle.key.empty()) return reader.fail("write: app NAME BUNDLE");
  if (bundle.bare() && bundle.text == "none") {
    change.application.withoutBundle = true;
  } else {
    change.application.bundle = bundle.text;
  }
  return readApplication(reader, 3, change) && reader.add(std::move(change));
}

bool readRelaunch(const Reader& reader) {
  if (reader.words().size() < 2) return reader.fail("relaunch which application?");
  Change change = reader.change(Verb::relaunch, reader.words()[1].text);
  return readApplication(reader, 2, change) && reader.add(std::move(change));
}

// Verbs that take one name and nothing else.
bool readTarget(const Reader& reader, Verb verb) {
  if (reader.words().size() != 2) return reader.fail("write: " + reader.line.verb() + " NAME");
  const std::string& name = reader.words()[1].text;
  return reader.add(reader.change(verb, verb == Verb::front && name == "none" ? "" : name));
}

bool readTrust(const Reader& reader) {
  const std::string answer = reader.words().size() == 2 ? reader.words()[1].text : "";
  if (answer != "yes" && answer != "no") return reader.fail("write: trust yes, or: trust no");
  Change change = reader.change(Verb::trust);
  change.flag = answer == "yes";
  return reader.add(std::move(change));
}

bool readAudio(const Reader& reader) {
  if (reader.words().size() < 2) return reader.fail("write: audio BUNDLE in out");
  const std::string& target = reader.words()[1].text;
  if (reader.words().size() == 2 && target == "none") {
    return reader.add(reader.change(Verb::audioEmpty));
  }
  if (reader.words().size() == 2 && target == "absent") {
    return reader.add(reader.change(Verb::audioAbsent));
  }
  Change change = reader.change(Verb::audio, target);
  change.audio.emplace();
  for (std::size_t i = 2; i < reader.words().size(); ++i) {
    const std::string& word = reader.words()[i].text;
    if (word == "in" && change.audio) {
      change.audio->input = true;
    } else if (word == "out" && change.audio) {
      change.audio->output = true;
    } else if (word == "gone" && reader.words().size() == 3) {
      change.audio.reset();
    } else {
      return reader.fail("\"" + word + "\" is neither in, out nor gone");
    }
  }
  return reader.add(std::move(change));
}

bool readScreenEntry(const Reader& reader, const Line& line, Change& change) {
  const auto fail = [&](const std::string& reason) {
    return reader.reading.problem.at(line.origin, reason);
  };
  if (line.verb() != "entry") return fail("write: entry APP \"TITLE\" layer=0 number=7");
  ScreenEntry entry;
  for (std::size_t i = 1; i < line.words.size(); ++i) {
    const Word& word = line.words[i];
    if (word.key == "layer" || word.key == "number") {
      const auto number = wholeNumber(word.text);
      if (!number) return fail("\"" + word.text + "\" is no number");
      (word.key == "layer" ? entry.window.layer : entry.window.number) = number;
    } else if (word.quoted && word.key.empty()) {
      entry.window.name = word.text;
    } else if (word.bare() && entry.owner.empty()) {
      entry.owner = word.text;
    } else {
      return fail("\"" + word.text + "\" means nothing here");
    }
  }
  change.entries.push_back(std::move(entry));
  return true;
}

bool readScreen(const Reader& reader) {
  Change change = reader.change(Verb::screen);
  const std::string list = reader.words().size() == 2 ? reader.words()[1].text : "";
  if (list == "absent" || list == "derived") {
    change.screenList = list == "absent" ? ScreenList::absent : ScreenList::derived;
    return reader.add(std::move(change));
  }
  if (reader.words().size() != 1) {
    return reader.fail("write: screen absent, screen derived, or entries below screen");
  }
  change.screenList = ScreenList::given;
  const auto readEntry = [&](const Line& line, const Place&) {
    return readScreenEntry(reader, line, change);
  };
  return forEachLine(reader.reading, reader.line.below, reader.place, readEntry) &&
         reader.add(std::move(change));
}

// `add`, `fill` and `replace`: a name, and elements below.
bool readTree(const Reader& reader, Verb verb) {
  if (reader.words().size() != 2) return reader.fail("write: " + reader.line.verb() + " NAME");
  Change change = reader.change(verb, reader.words()[1].text);
  if (!readElements(reader.reading, reader.line.below, reader.place, change.element)) return false;
  if (!change.element.errors.empty() || !change.element.delays.empty()) {
    return reader.fail("only elements stand below " + reader.line.verb());
  }
  if (change.element.children.empty() && verb != Verb::fill) {
    return reader.fail("nothing stands below " + reader.line.verb());
  }
  return reader.add(std::move(change));
}

bool readClose(const Reader& reader) {
  if (reader.words().size() < 2) return reader.fail("close which element?");
  for (std::size_t i = 1; i < reader.words().size(); ++i) {
    reader.changes.push_back(reader.change(Verb::close, reader.words()[i].text));
  }
  return true;
}

bool readMove(const Reader& reader) {
  if (reader.words().size() != 3) return reader.fail("write: move NAME DESTINATION");
  Change change = reader.change(Verb::move, reader.words()[1].text);
  change.destination = reader.words()[2].text;
  return reader.add(std::move(change));
}

bool readSet(const Reader& reader) {
  if (reader.words().size() < 3) return reader.fail("set what of which element?");
  Change change = reader.change(Verb::set, reader.words()[1].text);
  return readElementWords(reader.reading, reader.line, 2, /*named=*/false, change.element) &&
         reader.add(std::move(change));
}

// `fails NAME [ATTRIBUTE] CODE` and `slow NAME [ATTRIBUTE] DURATION`.
bool readTrouble(const Reader& reader, Verb verb) {
  const std::size_t count = reader.words().size();
  if (count < 3 || count > 4) {
    return reader.fail("write: " + reader.line.verb() + " NAME [ATTRIBUTE] " +
                       (verb == Verb::fail ? "CODE" : "DURATION"));
  }
  Change change = reader.change(verb, reader.words()[1].text);
  if (count == 4) change.attribute = reader.words()[2].text;
  const std::string& amount = reader.words().back().text;
  if (verb == Verb::fail) {
    const auto code = failureCode(amount);
    if (!code) return reader.fail("\"" + amount + "\" is no failure code");
    change.code = *code;
  } else {
    const auto seconds = duration(amount);
    if (!seconds) return reader.fail("\"" + amount + "\" is no duration");
    change.seconds = *seconds;
  }
  return reader.add(std::move(change));
}

bool readWorks(const Reader& reader) {
  if (reader.words().size() < 2 || reader.words().size() > 3) {
    return reader.fail("write: works NAME [ATTRIBUTE]");
  }
  Change change = reader.change(Verb::work, reader.words()[1].text);
  if (reader.words().size() == 3) change.attribute = reader.words()[2].text;
  return reader.add(std::move(change));
}

using Read = bool (*)(const Reader&);

struct VerbForm {
  Read read;
  bool linesBelow;  // whether lines may stand below
};

const std::map<std::string, VerbForm, std::less<>>& verbs() {
  static const std::map<std::string, VerbForm, std::less<>> all{
      {"app", {readStart, true}},
      {"relaunch", {readRelaunch, true}},
      {"quit", {[](const Reader& reader) { return readTarget(reader, Verb::quit); }, false}},
      {"front", {[](const Reader& reader) { return readTarget(reader, Verb::front); }, false}},
      {"focus", {[](const Reader& reader) { return readTarget(reader, Verb::focus); }, false}},
      {"detach", {[](const Reader& reader) { return readTarget(reader, Verb::detach); }, false}},
      {"trust", {readTrust, false}},
      {"audio", {readAudio, false}},
      {"screen", {readScreen, true}},
      {"add", {[](const Reader& reader) { return readTree(reader, Verb::add); }, true}},
      {"fill", {[](const Reader& reader) { return readTree(reader, Verb::fill); }, true}},
      {"replace", {[](const Reader& reader) { return readTree(reader, Verb::replace); }, true}},
      {"close", {readClose, false}},
      {"move", {readMove, false}},
      {"set", {readSet, false}},
      {"fails", {[](const Reader& reader) { return readTrouble(reader, Verb::fail); }, false}},
      {"slow", {[](const Reader& reader) { return readTrouble(reader, Verb::slow); }, false}},
      {"works", {readWorks, false}},
  };
  return all;
}

}  // namespace

bool readChanges(Reading& reading, const std::vector<Line>& lines, const Place& place,
                 std::vector<Change>& changes) {
  return forEachLine(reading, lines, place, [&](const Line& line, const Place& inside) {
    const auto form = verbs().find(line.verb());
    if (form == verbs().end()) {
      return reading.problem.at(line.origin, "\"" + line.verb() + "\" is not known here");
    }
    if (!form->second.linesBelow && !line.below.empty()) {
      return reading.problem.at(line.below.front().origin,
                                "nothing may stand below " + line.verb());
    }
    return form->second.read({reading, line, inside, changes});
  });
}

}  // namespace callmonitor::scenario
