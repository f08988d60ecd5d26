#include "text/unicode.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "text/icu_strings.h"

namespace callmonitor {
namespace {

bool ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

// Nearly every label is ASCII, where all of Unicode's rules come down to these two.
char asciiLowerCased(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
bool asciiSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// One iterator serves the whole process: making one costs far more than setting its text.
icu::BreakIterator& characterBoundaries() {
  static const std::unique_ptr<icu::BreakIterator> iterator = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> made(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) std::abort();  // an ICU without its data cannot be used at all
    return made;
  }();
  return *iterator;
}

bool controlsWriting(UChar32 codePoint) {
  constexpr std::uint32_t controls = U_GC_CC_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK;
  return (U_GET_GC_MASK(codePoint) & controls) != 0 ||
         u_hasBinaryProperty(codePoint, UCHAR_BIDI_CONTROL) != 0;
}

}  // namespace

std::string lowerCased(std::string_view text) {
  std::string result;
  if (ascii(text)) {
    result.resize(text.size());
    std::transform(text.begin(), text.end(), result.begin(), asciiLowerCased);
    return result;
  }
  icuString(text).toLower(icu::Locale::getRoot()).toUTF8String(result);
  return result;
}

std::string singleSpaced(std::string_view text) {
  std::string result;
  if (ascii(text)) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (asciiSpace(text[i])) continue;
      if (i > 0 && asciiSpace(text[i - 1]) && !result.empty()) result += ' ';
      result += text[i];
    }
    return result;
  }
  const icu::UnicodeString unicode = icuString(text);
  icu::UnicodeString joined;
  bool gap = false;
  for (std::int32_t i = 0; i < unicode.length(); i = unicode.moveIndex32(i, 1)) {
    const UChar32 codePoint = unicode.char32At(i);
    const bool space = u_isUWhiteSpace(codePoint) != 0;
    if (!space) {
      if (gap && !joined.isEmpty()) joined.append(u' ');
      joined.append(codePoint);
    }
    gap = space;
  }
  joined.toUTF8String(result);
  return result;
}

bool shorterThan(std::string_view text, std::size_t limit) {
  if (text.size() < limit) return true;  // a character takes at least one byte
  icu::BreakIterator& boundaries = characterBoundaries();
  const icu::UnicodeString unicode = icuString(text);
  boundaries.setText(unicode);
  boundaries.first();
  std::size_t characters = 0;
  while (characters < limit && boundaries.next() != icu::BreakIterator::DONE) ++characters;
  return characters < limit;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
  if (text.size() <= count) return std::string(text);
  icu::BreakIterator& boundaries = characterBoundaries();
  const icu::UnicodeString unicode = icuString(text);
  boundaries.setText(unicode);
  std::int32_t end = boundaries.first();
  for (std::size_t characters = 0; characters < count; ++characters) {
    const std::int32_t next = boundaries.next();
    if (next == icu::BreakIterator::DONE) return std::string(text);
    end = next;
  }
  std::string result;
  unicode.tempSubString(0, end).toUTF8String(result);
  return result;
}

std::string controlsEscaped(std::string_view text) {
  const icu::UnicodeString unicode = icuString(text);
  icu::UnicodeString escaped;
  for (std::int32_t i = 0; i < unicode.length(); i = unicode.moveIndex32(i, 1)) {
    const UChar32 codePoint = unicode.char32At(i);
    if (controlsWriting(codePoint)) {
      char sequence[16];
      std::snprintf(sequence, sizeof sequence, "\\u{%X}", static_cast<unsigned>(codePoint));
      escaped.append(icuString(sequence));
    } else {
      escaped.append(codePoint);
    }
  }
  std::string result;
  escaped.toUTF8String(result);
  return result;
}

std::size_t utf16Length(std::string_view text) {
  return static_cast<std::size_t>(icuString(text).length());
}

bool validUtf8(std::string_view bytes) {
  if (ascii(bytes)) return true;
  UErrorCode status = U_ZERO_ERROR;
  std::int32_t units = 0;
  // Without room for the result this only counts and checks.
  u_strFromUTF8(nullptr, 0, &units, bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
  return status == U_ZERO_ERROR || status == U_BUFFER_OVERFLOW_ERROR ||
         status == U_STRING_NOT_TERMINATED_WARNING;
}

}  // namespace callmonitor
