// The answers to a read that are none, and values of every type that an attribute may not have.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "macos/stepped_desktop.h"

namespace callmonitor::macos {

// The failures that are told of; the others mean that there is nothing.
inline constexpr std::array<std::int32_t, 6> failing{-25200, -25201, -25202,
                                                     -25204, -25208, -25211};
inline constexpr std::array<std::int32_t, 2> notThere{-25205, -25212};

struct Wrong {
  std::string type;
  std::function<Object*()> make;
};

inline Object* someElement() {
  return standins::made(standins::ElementHandle{"app:101/w"});
}

// A value of every type, by its name.
inline const std::vector<Wrong>& values() {
  static const std::vector<Wrong> all{
      {"text", [] { return standins::madeText("text"); }},
      {"empty text", [] { return standins::madeText(""); }},
      {"number", [] { return standins::madeNumber(1); }},
      {"fraction", [] { return standins::madeFraction(0.5); }},
      {"boolean", [] { return standins::flagObject(true); }},
      {"address", [] { return standins::madeUrl("https://zoom.us", "https://zoom.us"); }},
      {"element", someElement},
      {"elements", [] { return standins::madeList({someElement()}); }},
      {"empty list", [] { return standins::madeList({}); }},
      {"mixed list",
       [] {
         return standins::madeList({someElement(), standins::madeNumber(1)});
       }},
      {"list of texts", [] { return standins::madeList({standins::madeText("text")}); }},
      {"list with a hole",
       [] {
         return standins::madeList({someElement(), nullptr});
       }},
      {"dictionary", [] { return standins::made(standins::Dictionary{}); }},
      {"null object", [] { return standins::made(standins::Named{"null"}); }},
      {"point", [] { return standins::made(standins::Geometry{}); }},
  };
  return all;
}

// Every answer to a read that gives nothing: a code, NULL beside success, or a value of another
// type than those named. `told` is the code that a scan names, 0 for one that it does not.
struct NoAnswer {
  std::string sentence;
  standins::AttributeFault fault;
  std::int32_t told = 0;
};
inline std::vector<NoAnswer> noAnswers(const std::vector<std::string>& types) {
  std::vector<NoAnswer> all;
  all.reserve(failing.size() + notThere.size() + values().size() + 2);
  for (const std::int32_t code : failing) {
    all.push_back(
        {"fails with " + std::to_string(code), {.code = code, .value = {}, .delay = {}}, code});
  }
  for (const std::int32_t code : notThere) {
    all.push_back(
        {"is absent by " + std::to_string(code), {.code = code, .value = {}, .delay = {}}});
  }
  all.push_back({"succeeds with NULL", {.code = 0, .value = [] { return nullptr; }, .delay = {}}});
  for (const Wrong& value : values()) {
    if (std::ranges::count(types, value.type) > 0) continue;
    all.push_back({"is a " + value.type, {.code = 0, .value = value.make, .delay = {}}});
  }
  all.push_back(
      {"is late", {.code = {}, .value = {}, .delay = 10}, platform::code::cannotComplete});
  return all;
}

}  // namespace callmonitor::macos
