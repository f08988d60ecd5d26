#include "platform/scenario/element_lines.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <system_error>
#include <utility>

#include "platform/scenario/element_kinds.h"

namespace callmonitor::scenario {
namespace {

// Fragments that use each other deeper than this use themselves.
constexpr int fragmentDepth = 16;
// More copies than any scenario means.
constexpr std::int64_t repeatLimit = 100'000;

using NamedText = std::pair<std::string_view, std::string_view>;

// The words for attributes. Any other attribute is called by its own name.
constexpr auto attributeWords = std::to_array<NamedText>({
    {"title", "AXTitle"},
    {"description", "AXDescription"},
    {"value", "AXValue"},
    {"role", "AXRole"},
    {"subrole", "AXSubrole"},
    {"role-description", "AXRoleDescription"},
    {"identifier", "AXIdentifier"},
    {"help", "AXHelp"},
    {"url-text", "AXURL"},
});

bool useFragment(Reading& reading, const Line& line, const Place& place,
                 const std::function<bool(const Line&, const Place&)>& read) {
  Problem& problem = reading.problem;
  if (line.words.size() < 2) return problem.at(line.origin, "use which definition?");
  if (!line.below.empty()) return problem.at(line.origin, "nothing may stand below a use");
  const auto found = reading.fragments.find(line.words[1].text);
  if (found == reading.fragments.end()) {
    return problem.at(line.origin, "\"" + line.words[1].text + "\" is not defined above");
  }
  const Fragment& fragment = found->second;
  if (line.words.size() - 2 != fragment.parameters.size()) {
    return problem.at(line.origin, "\"" + line.words[1].text + "\" takes " +
                                       std::to_string(fragment.parameters.size()) + " values");
  }
  if (place.depth == fragmentDepth) {
    return problem.at(line.origin, "\"" + line.words[1].text + "\" uses itself");
  }
  Place inside{{}, place.depth + 1};
  for (std::size_t i = 0; i < fragment.parameters.size(); ++i) {
    inside.substitutes[fragment.parameters[i]] = line.words[i + 2].text;
  }
  return forEachLine(reading, fragment.lines, inside, read);
}

bool repeatLines(Reading& reading, const Line& line, const Place& place,
                 const std::function<bool(const Line&, const Place&)>& read) {
  const auto times = line.words.size() == 2 ? wholeNumber(line.words[1].text) : std::nullopt;
  if (!times || *times < 1 || *times > repeatLimit) {
    return reading.problem.at(line.origin, "repeat how many times?");
  }
  if (line.below.empty()) return reading.problem.at(line.origin, "repeat what?");
  Place inside = place;
  for (std::int64_t n = 1; n <= *times; ++n) {
    inside.substitutes["n"] = std::to_string(n);
    if (!forEachLine(reading, line.below, inside, read)) return false;
  }
  return true;
}

std::vector<Reference> namesIn(std::string_view list) {
  std::vector<Reference> names;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    names.push_back({std::string(list.substr(0, end))});
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return names;
}

// The value that a word stands for: a text, unless it is bare and one of the words for other types.
Value valueOf(const Word& word) {
  const std::string_view text = word.text;
  const auto after = [&](std::string_view start) { return std::string(text.substr(start.size())); };
  if (word.quoted) return word.text;
  if (text == "none") return std::monostate();
  if (text == "other") return platform::OtherType();
  if (text == "true" || text == "false") return text == "true";
  if (text.starts_with("element:")) return Reference{after("element:")};
  if (text.starts_with("elements:")) return namesIn(after("elements:"));
  if (text.starts_with("address:")) return platform::Address{after("address:")};
  return word.text;
}

// Words that say something about an element all by themselves. False when it is none of them.
bool readFlag(const std::string& word, ElementDescription& element) {
  if (word == "hidden" || word == "shown") {
    element.attributes["AXHidden"] = word == "hidden";
  } else if (word == "disabled" || word == "enabled") {
    element.attributes["AXEnabled"] = word == "enabled";
  } else if (word == "offscreen" || word == "onscreen") {
    element.onScreen = word == "onscreen";
  } else {
    return false;
  }
  return true;
}

bool readNamedWord(Reading& reading, const Line& line, const Word& word,
                   ElementDescription& element) {
  const auto* known = std::ranges::find(attributeWords, word.key, &NamedText::first);
  if (known != attributeWords.end()) {
    element.attributes[std::string(known->second)] = valueOf(word);
  } else if (word.key == "url") {
    element.attributes["AXURL"] = platform::Address{word.text};
  } else if (word.key == "number") {
    element.number = wholeNumber(word.text);
    if (!element.number) return reading.problem.at(line.origin, "a window number is a number");
  } else if (word.key.starts_with("AX")) {
    element.attributes[word.key] = valueOf(word);
  } else {
    return reading.problem.at(line.origin, "unknown attribute \"" + word.key + "\"");
  }
  return true;
}

// `fails [ATTRIBUTE] CODE` and `slow [ATTRIBUTE] DURATION` below an element.
bool readTrouble(Reading& reading, const Line& line, ElementDescription& element) {
  if (line.words.size() < 2 || line.words.size() > 3 || !line.below.empty()) {
    return reading.problem.at(line.origin, "write: " + line.verb() + " [ATTRIBUTE] " +
                                               (line.verb() == "fails" ? "CODE" : "DURATION"));
  }
  const std::string attribute = line.words.size() == 3 ? line.words[1].text : "";
  const std::string& amount = line.words.back().text;
  if (line.verb() == "slow") {
    const auto seconds = duration(amount);
    if (!seconds) return reading.problem.at(line.origin, "\"" + amount + "\" is no duration");
    element.delays[attribute] = *seconds;
    return true;
  }
  const auto code = failureCode(amount);
  if (!code) return reading.problem.at(line.origin, "\"" + amount + "\" is no failure code");
  element.errors[attribute] = *code;
  return true;
}

}  // namespace

bool forEachLine(Reading& reading, const std::vector<Line>& lines, const Place& place,
                 const std::function<bool(const Line&, const Place&)>& read) {
  return std::ranges::all_of(lines, [&](const Line& written) {
    const std::optional<Line> line = substituted(written, place.substitutes, reading.problem);
    if (!line) return false;
    if (line->verb() == "use") return useFragment(reading, *line, place, read);
    if (line->verb() == "repeat") return repeatLines(reading, *line, place, read);
    return read(*line, place);
  });
}

bool readElements(Reading& reading, const std::vector<Line>& lines, const Place& place,
                  ElementDescription& parent) {
  return forEachLine(reading, lines, place, [&](const Line& line, const Place& inside) {
    if (line.verb() == "fails" || line.verb() == "slow") return readTrouble(reading, line, parent);
    if (!elementKindKnown(line.verb())) {
      return reading.problem.at(line.origin, "\"" + line.verb() + "\" is no kind of element");
    }
    ElementDescription element;
    element.origin = line.origin;
    element.kind = line.verb();
    if (!readElementWords(reading, line, 1, /*named=*/true, element)) return false;
    if (!readElements(reading, line.below, inside, element)) return false;
    parent.children.push_back(std::move(element));
    return true;
  });
}

bool readElementWords(Reading& reading, const Line& line, std::size_t from, bool named,
                      ElementDescription& element) {
  for (std::size_t i = from; i < line.words.size(); ++i) {
    const Word& word = line.words[i];
    if (!word.key.empty()) {
      if (!readNamedWord(reading, line, word, element)) return false;
    } else if (word.quoted) {
      if (element.text) return reading.problem.at(line.origin, "an element has one text only");
      element.text = word.text;
    } else if (word.text.find("://") != std::string::npos) {
      element.attributes["AXURL"] = platform::Address{word.text};
    } else if (!readFlag(word.text, element)) {
      if (!named || !element.name.empty() || !validName(word.text)) {
        return reading.problem.at(line.origin, "\"" + word.text + "\" means nothing here");
      }
      element.name = word.text;
    }
  }
  return true;
}

// Not every standard library converts characters to fractions, so the C library does. It would also
// take signs, exponents and words, which is what the digits are asked for beforehand; it takes the
// point for what it is because the process never sets a locale.
std::optional<double> decimalNumber(std::string_view text) {
  if (text.find_first_not_of("0123456789.") != std::string_view::npos) return std::nullopt;
  const std::string terminated(text);
  char* end = nullptr;
  const double number = std::strtod(terminated.c_str(), &end);
  if (end == terminated.c_str() || end != terminated.c_str() + terminated.size() ||
      !std::isfinite(number)) {
    return std::nullopt;
  }
  return number;
}

std::optional<double> duration(std::string_view text) {
  constexpr auto units = std::to_array<std::pair<std::string_view, double>>(
      {{"ms", 0.001}, {"s", 1}, {"m", 60}, {"h", 3600}});
  const std::size_t digits = text.find_first_not_of("0123456789.");
  if (digits == std::string_view::npos) return std::nullopt;
  const auto* unit =
      std::ranges::find(units, text.substr(digits), &std::pair<std::string_view, double>::first);
  const std::optional<double> amount = decimalNumber(text.substr(0, digits));
  if (unit == units.end() || !amount) return std::nullopt;
  return *amount * unit->second;
}

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<std::int32_t> failureCode(std::string_view text) {
  namespace code = platform::code;
  constexpr auto words = std::to_array<std::pair<std::string_view, std::int32_t>>(
      {{"failure", code::failure},
       {"illegal-argument", code::illegalArgument},
       {"invalid-element", code::invalidElement},
       {"cannot-complete", code::cannotComplete},
       {"unsupported", code::attributeUnsupported},
       {"no-value", code::noValue}});
  for (const auto& [word, meaning] : words) {
    if (word == text) return meaning;
  }
  const auto number = wholeNumber(text);
  if (!number || *number == code::success || *number < std::numeric_limits<std::int32_t>::min() ||
      *number > std::numeric_limits<std::int32_t>::max()) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(*number);
}

bool validName(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_' || c == '.';
  });
}

}  // namespace callmonitor::scenario
