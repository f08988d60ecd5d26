// The one place that writes and reads JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace callmonitor {

// What a record may hold; there is no nesting but lists of texts.
using JsonValue =
    std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, std::vector<std::string>>;

// One record of the output stream: a flat dictionary. It serialises in ascending order of key.
using Record = std::map<std::string, JsonValue>;

// The record as compact JSON on one line, each "/" escaped as "\/". Doubles are written so that
// reading them back gives the same double. Absent when a text is not UTF-8 or a number is not
// finite, which JSON cannot hold.
[[nodiscard]] std::optional<std::string> serialized(const Record& record);

// The string that a JSON object holds under `name`. Absent when the bytes are not JSON, their top
// level is not an object, or the member is missing or not a string.
[[nodiscard]] std::optional<std::string> stringMember(std::string_view json,
                                                      const std::string& name);

}  // namespace callmonitor
