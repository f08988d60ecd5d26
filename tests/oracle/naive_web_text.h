// The formats that addresses are made of, read by hand: RFC 3986, percent escapes, base64, JSON.
#pragma once

#include <optional>
#include <string>

namespace callmonitor::oracle {

// The parts of an address as written.
struct Address {
  std::optional<std::string> scheme;
  std::optional<std::string> user;
  std::optional<std::string> host;
  std::optional<std::string> port;  // may be empty
  std::string path;
  std::optional<std::string> query;
  std::optional<std::string> fragment;
};

// Absent when the text is no URI reference.
[[nodiscard]] std::optional<Address> addressOf(const std::string& raw);

// Absent when an escape is broken or the result is not UTF-8.
[[nodiscard]] std::optional<std::string> unescaped(const std::string& text);

// The bytes of standard base64 with exact padding; bits that pad the last byte do not matter.
[[nodiscard]] std::optional<std::string> bytesOfBase64(const std::string& text);

// The text under `name` in a JSON object; absent for anything that is no JSON object, and for any
// other kind of value. Names in the object do not repeat.
[[nodiscard]] std::optional<std::string> textInObject(const std::string& json,
                                                      const std::string& name);

}  // namespace callmonitor::oracle
