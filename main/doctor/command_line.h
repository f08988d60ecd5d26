// What the doctor was asked for.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace callmonitor::doctor {

struct Request {
  bool titles = false;
  bool help = false;  // wins over the rest
};

// `words` are the arguments without the program's path. Absent when one is not known.
[[nodiscard]] std::optional<Request> requestIn(const std::vector<std::string>& words);

inline constexpr const char* usage =
    "usage: call-monitor-doctor [--titles | --help]\n"
    "\n"
    "Prints as text what call-monitor can see of this desktop: whether it may read other\n"
    "applications, which run and what it takes them for, their windows, sound, and how long reads\n"
    "take. It changes nothing and asks for nothing.\n"
    "\n"
    "  --titles  shows the titles of windows, which may be private, instead of their lengths\n";

}  // namespace callmonitor::doctor
