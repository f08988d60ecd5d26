#define PCRE2_CODE_UNIT_WIDTH 8

#include "oracle/expression.h"

#include <pcre2.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace callmonitor::oracle {
namespace {

[[noreturn]] void giveUp(int error) {
  PCRE2_UCHAR message[256] = {};
  pcre2_get_error_message(error, message, sizeof message);
  std::fprintf(stderr, "expression: %s\n", reinterpret_cast<const char*>(message));
  std::abort();
}

PCRE2_SPTR bytes(const std::string& text) {
  return reinterpret_cast<PCRE2_SPTR>(text.data());
}

Expression compile(const std::string& pattern, std::uint32_t options) {
  int error = 0;
  PCRE2_SIZE place = 0;
  pcre2_code* code = pcre2_compile(bytes(pattern), pattern.size(), options | PCRE2_DOLLAR_ENDONLY,
                                   &error, &place, nullptr);
  if (code == nullptr) giveUp(error);
  return {{code, pcre2_code_free}};
}

// The first match: where it and its groups begin and end, in pairs; empty without one.
std::vector<PCRE2_SIZE> match(const std::string& text, const Expression& expression,
                              std::uint32_t options) {
  const std::unique_ptr<pcre2_match_data, decltype(&pcre2_match_data_free)> data(
      pcre2_match_data_create_from_pattern(expression.code.get(), nullptr), pcre2_match_data_free);
  const int pairs =
      pcre2_match(expression.code.get(), bytes(text), text.size(), 0, options, data.get(), nullptr);
  if (pairs == PCRE2_ERROR_NOMATCH) return {};
  if (pairs < 0) giveUp(pairs);
  const PCRE2_SIZE* places = pcre2_get_ovector_pointer(data.get());
  return {places, places + 2 * static_cast<std::size_t>(pairs)};
}

}  // namespace

Expression overCharacters(const std::string& pattern) {
  return compile(pattern, PCRE2_UTF);
}

Expression overBytes(const std::string& pattern) {
  return compile(pattern, 0);
}

bool matchesWhole(const std::string& text, const Expression& expression) {
  return !match(text, expression, PCRE2_ANCHORED | PCRE2_ENDANCHORED).empty();
}

bool matchesSomewhere(const std::string& text, const Expression& expression) {
  return !match(text, expression, 0).empty();
}

std::optional<std::vector<std::string>> matchAtFront(const std::string& text,
                                                     const Expression& expression) {
  const std::vector<PCRE2_SIZE> places = match(text, expression, PCRE2_ANCHORED);
  if (places.empty()) return std::nullopt;
  std::vector<std::string> taken;
  for (std::size_t i = 0; i < places.size(); i += 2) {
    const bool took = places[i] != PCRE2_UNSET;
    taken.push_back(took ? text.substr(places[i], places[i + 1] - places[i]) : std::string());
  }
  return taken;
}

std::string withoutMatch(const std::string& text, const Expression& expression) {
  const std::vector<PCRE2_SIZE> places = match(text, expression, 0);
  if (places.empty()) return text;
  return text.substr(0, places[0]) + text.substr(places[1]);
}

}  // namespace callmonitor::oracle
