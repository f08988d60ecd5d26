#include "text/json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "text/unicode.h"

namespace callmonitor {
namespace {

bool representable(const JsonValue& value) {
  if (const auto* number = std::get_if<double>(&value)) return std::isfinite(*number);
  if (const auto* text = std::get_if<std::string>(&value)) return validUtf8(*text);
  if (const auto* texts = std::get_if<std::vector<std::string>>(&value)) {
    for (const std::string& text : *texts) {
      if (!validUtf8(text)) return false;
    }
  }
  return true;
}

}  // namespace

std::optional<std::string> serialized(const Record& record) {
  nlohmann::json object = nlohmann::json::object();
  for (const auto& [key, value] : record) {
    if (!validUtf8(key) || !representable(value)) return std::nullopt;
    std::visit([&, &name = key](const auto& held) { object[name] = held; }, value);
  }
  std::string line;
  // A slash stands in texts only, and the library never puts a backslash before one.
  for (const char c : object.dump()) {
    if (c == '/') line += '\\';
    line += c;
  }
  return line;
}

std::optional<std::string> stringMember(std::string_view json, const std::string& name) {
  // The library takes a NUL for the end of the text, and would not see what stands behind it.
  if (json.find('\0') != std::string_view::npos) return std::nullopt;
  const nlohmann::json parsed = nlohmann::json::parse(json, nullptr, /*allow_exceptions=*/false);
  if (!parsed.is_object()) return std::nullopt;
  const auto member = parsed.find(name);
  if (member == parsed.end() || !member->is_string()) return std::nullopt;
  return member->get<std::string>();
}

}  // namespace callmonitor
