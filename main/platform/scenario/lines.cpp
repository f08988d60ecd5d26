#include "platform/scenario/lines.h"

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace callmonitor::scenario {
namespace {

// Stands for a brace that was written as "\{", so that it is not taken for the start of a name.
constexpr char literalBrace = '\x01';

constexpr std::uint32_t lastCharacter = 0x10FFFF;

bool blank(char c) {
  return c == ' ' || c == '\r';
}

void appendCharacter(std::string& text, std::uint32_t character) {
  const auto byte = [&](std::uint32_t bits) { text += static_cast<char>(bits); };
  if (character < 0x80) {
    byte(character);
  } else if (character < 0x800) {
    byte(0xC0 | character >> 6);
    byte(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    byte(0xE0 | character >> 12);
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  } else {
    byte(0xF0 | character >> 18);
    byte(0x80 | (character >> 12 & 0x3F));
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  }
}

// One physical line while it is taken apart.
struct Cursor {
  std::string_view rest;
  const std::string& origin;
  Problem& problem;

  [[nodiscard]] bool at(char c) const { return !rest.empty() && rest.front() == c; }
  char take() {
    const char c = rest.front();
    rest.remove_prefix(1);
    return c;
  }
  bool fail(const std::string& reason) { return problem.at(origin, reason); }
};

// "\u{2019}" after its "u".
bool takeCharacterNumber(Cursor& cursor, std::string& text) {
  const std::size_t end = cursor.rest.find('}');
  if (!cursor.at('{') || end == std::string_view::npos || end < 2 || end > 7) {
    return cursor.fail("\\u is followed by a hexadecimal number in braces: \\u{2019}");
  }
  std::uint32_t character = 0;
  for (const char c : cursor.rest.substr(1, end - 1)) {
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) {
      return cursor.fail("\\u is followed by a hexadecimal number in braces: \\u{2019}");
    }
    const int digit = c <= '9' ? c - '0' : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10;
    character = character * 16 + static_cast<std::uint32_t>(digit);
  }
  if (character > lastCharacter || (character >= 0xD800 && character < 0xE000)) {
    return cursor.fail("there is no such character");
  }
  appendCharacter(text, character);
  cursor.rest.remove_prefix(end + 1);
  return true;
}

bool takeEscape(Cursor& cursor, std::string& text) {
  if (cursor.rest.empty()) return cursor.fail("a quote is not closed");
  const char c = cursor.take();
  switch (c) {
    case '"':
    case '\\':
      text += c;
      return true;
    case '{':
      text += literalBrace;
      return true;
    case 'n':
      text += '\n';
      return true;
    case 't':
      text += '\t';
      return true;
    case 'u':
      return takeCharacterNumber(cursor, text);
    default:
      return cursor.fail(std::string("unknown escape \\") + c);
  }
}

bool takeQuoted(Cursor& cursor, std::string& text) {
  cursor.take();
  while (!cursor.at('"')) {
    if (cursor.rest.empty()) return cursor.fail("a quote is not closed");
    const char c = cursor.take();
    if (c != '\\') {
      text += c;
    } else if (!takeEscape(cursor, text)) {
      return false;
    }
  }
  cursor.take();
  if (!cursor.rest.empty() && !blank(cursor.rest.front())) {
    return cursor.fail("a blank is missing after a quote");
  }
  return true;
}

// Only what looks like a name may be a key, so that an address with "=" in it stays one word.
bool keyCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-';
}

bool takeWord(Cursor& cursor, Word& word) {
  bool keyPossible = true;
  while (!cursor.rest.empty() && !blank(cursor.rest.front())) {
    if (cursor.at('"') && word.text.empty()) {
      word.quoted = true;
      return takeQuoted(cursor, word.text);
    }
    const char c = cursor.take();
    if (c == '=' && keyPossible && word.key.empty() && !word.text.empty()) {
      word.key = std::exchange(word.text, std::string());
      keyPossible = false;
    } else {
      keyPossible = keyPossible && keyCharacter(c);
      word.text += c;
    }
  }
  return true;
}

bool takeWords(Cursor& cursor, std::vector<Word>& words) {
  while (true) {
    while (!cursor.rest.empty() && blank(cursor.rest.front())) cursor.take();
    if (cursor.rest.empty() || cursor.at('#')) return true;
    Word word;
    if (!takeWord(cursor, word)) return false;
    words.push_back(std::move(word));
  }
}

// The list of lines that a line with this indentation belongs to: `open` holds the lines above it
// that may have lines below them, by their indentation.
struct Nesting {
  struct Level {
    std::size_t indentation = 0;
    std::vector<Line>* lines = nullptr;
  };
  std::vector<Level> levels;

  bool place(Line line, std::size_t indentation, Problem& problem) {
    if (indentation > levels.back().indentation) {
      if (levels.back().lines->empty()) {
        return problem.at(line.origin, "the first line is indented");
      }
      levels.push_back({indentation, &levels.back().lines->back().below});
    }
    while (levels.back().indentation > indentation) levels.pop_back();
    if (levels.back().indentation != indentation) {
      return problem.at(line.origin, "the indentation fits no line above");
    }
    levels.back().lines->push_back(std::move(line));
    return true;
  }
};

}  // namespace

std::optional<std::vector<Line>> readLines(std::string_view text, const std::string& file,
                                           Problem& problem) {
  std::vector<Line> lines;
  Nesting nesting{{{0, &lines}}};
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    const std::string_view whole = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);

    Line line;
    line.origin = (file.empty() ? "" : file + " ") + "line " + std::to_string(number);
    Cursor cursor{whole, line.origin, problem};
    while (cursor.at(' ')) cursor.take();
    if (cursor.at('\t')) {
      cursor.fail("lines are indented with blanks, not with tabs");
      return std::nullopt;
    }
    const std::size_t indentation = whole.size() - cursor.rest.size();
    if (!takeWords(cursor, line.words)) return std::nullopt;
    if (line.words.empty()) continue;
    if (!line.words.front().bare()) {
      cursor.fail("a line begins with a word that says what it is");
      return std::nullopt;
    }
    if (!nesting.place(std::move(line), indentation, problem)) return std::nullopt;
  }
  return lines;
}

std::optional<Line> substituted(const Line& line, const Substitutes& substitutes,
                                Problem& problem) {
  Line result = line;
  for (Word& word : result.words) {
    std::string text;
    for (std::size_t i = 0; i < word.text.size(); ++i) {
      const char c = word.text[i];
      const std::size_t end = c == '{' ? word.text.find('}', i) : std::string::npos;
      if (end == std::string::npos) {
        text += c == literalBrace ? '{' : c;
        continue;
      }
      const auto found = substitutes.find(word.text.substr(i + 1, end - i - 1));
      if (found == substitutes.end()) {
        problem.at(line.origin, "nothing stands for " + word.text.substr(i, end - i + 1));
        return std::nullopt;
      }
      text += found->second;
      i = end;
    }
    word.text = std::move(text);
  }
  return result;
}

}  // namespace callmonitor::scenario
