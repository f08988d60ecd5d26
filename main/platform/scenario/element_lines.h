// Reads the lines that describe elements, and what such lines share with those of changes.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/scenario/lines.h"
#include "platform/scenario/scenario.h"

namespace callmonitor::scenario {

// Lines that a `define` keeps for later use.
struct Fragment {
  std::vector<std::string> parameters;
  std::vector<Line> lines;
};

// What stays the same while one scenario is read.
struct Reading {
  std::map<std::string, Fragment> fragments;
  Problem problem;
};

// Where the lines that are being read stand.
struct Place {
  Substitutes substitutes;
  int depth = 0;  // of fragments within fragments
};

// Goes through lines with `use` and `repeat` carried out and all names substituted; `read` gets
// each line that remains with its place, and gives false when it failed.
bool forEachLine(Reading& reading, const std::vector<Line>& lines, const Place& place,
                 const std::function<bool(const Line&, const Place&)>& read);

// Reads the lines below an element: its children, and what fails or is slow in it.
bool readElements(Reading& reading, const std::vector<Line>& lines, const Place& place,
                  ElementDescription& parent);

// Reads what an element line says after its first word (and, where `named`, its name).
bool readElementWords(Reading& reading, const Line& line, std::size_t from, bool named,
                      ElementDescription& element);

// "3", "3.5": digits with at most one point among them. Absent for anything else, and for a number
// beyond what fits.
[[nodiscard]] std::optional<double> decimalNumber(std::string_view text);
// "3.5s", "200ms", "2m", "24h" in seconds. Absent for anything else.
[[nodiscard]] std::optional<double> duration(std::string_view text);
// A whole number, or absent.
[[nodiscard]] std::optional<std::int64_t> wholeNumber(std::string_view text);
// A failure's decimal code or its word: "failure", "illegal-argument", "invalid-element",
// "cannot-complete", "unsupported", "no-value". Absent for anything else, and for success.
[[nodiscard]] std::optional<std::int32_t> failureCode(std::string_view text);
// Whether a text may name an element, an application or a fragment.
[[nodiscard]] bool validName(std::string_view text);

}  // namespace callmonitor::scenario
