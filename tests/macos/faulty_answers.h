// The answers to a read that are none, and values of every type.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "macos/stepped_desktop.h"

namespace callmonitor::macos {

// The failures that are told of; the others mean that there is nothing.
inline constexpr std::array<std::int32_t, 6> failing{
    kAXErrorFailure,        kAXErrorIllegalArgument, kAXErrorInvalidUIElement,
    kAXErrorCannotComplete, kAXErrorNotImplemented,  kAXErrorAPIDisabled};
inline constexpr std::array<std::int32_t, 2> notThere{kAXErrorAttributeUnsupported,
                                                      kAXErrorNoValue};

// Both, the failures first.
inline std::vector<std::int32_t> everyCode() {
  std::vector<std::int32_t> codes(failing.begin(), failing.end());
  codes.insert(codes.end(), notThere.begin(), notThere.end());
  return codes;
}

// What a scan names of a read that answered with a code: nothing where the code is 0.
inline std::vector<std::string> told(const std::string& attribute, std::int32_t code) {
  if (code == 0) return {};
  return {attribute + ":" + std::to_string(code)};
}

struct TypedValue {
  std::string type;
  std::function<Object*()> make;
};

inline Object* someElement() {
  return standins::made(standins::ElementHandle{"app:101/w"});
}

// A value of every type, by its name.
inline const std::vector<TypedValue>& typedValues() {
  static const std::vector<TypedValue> all{
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

// Every answer to a read that gives nothing: a code, NULL beside success, a value of another type
// than those named, or one that comes too late. `told` is the code that a scan names, 0 for one
// that it does not.
struct NoAnswer {
  std::string sentence;
  standins::AttributeFault fault;
  std::int32_t told = 0;
};
inline std::vector<NoAnswer> noAnswers(const std::vector<std::string>& types) {
  std::vector<NoAnswer> all;
  all.reserve(failing.size() + notThere.size() + typedValues().size() + 2);
  for (const std::int32_t code : failing) {
    all.push_back(
        {"fails with " + std::to_string(code), {.code = code, .value = {}, .delay = {}}, code});
  }
  for (const std::int32_t code : notThere) {
    all.push_back(
        {"is absent by " + std::to_string(code), {.code = code, .value = {}, .delay = {}}});
  }
  all.push_back({"succeeds with NULL", {.code = 0, .value = [] { return nullptr; }, .delay = {}}});
  for (const TypedValue& value : typedValues()) {
    if (std::ranges::count(types, value.type) > 0) continue;
    all.push_back({"gives: " + value.type, {.code = 0, .value = value.make, .delay = {}}});
  }
  all.push_back(
      {"is late", {.code = {}, .value = {}, .delay = 10}, platform::code::cannotComplete});
  return all;
}

}  // namespace callmonitor::macos
