// Sending and unpacking only; what a value means is decided by the callers.
#include "platform/linux/accessible_object.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace callmonitor::platform {
namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* component = "org.a11y.atspi.Component";
constexpr std::uint32_t onScreen = 0;  // the coordinates of `GetExtents`
constexpr std::string_view nullPath = "/org/a11y/atspi/null";

// A reply that cannot be unpacked is a failure like any other.
template <class Value>
Answer<Value> unpacked(bool good, Value value) {
  if (!good) return {code::failure, {}};
  return {code::success, std::move(value)};
}

Answer<std::string> textOf(const BusReply& reply) {
  if (reply.code != code::success) return {reply.code, {}};
  const char* text = nullptr;
  const bool good = sd_bus_message_read(reply.message.get(), "s", &text) > 0;
  return unpacked<std::string>(good, good ? text : "");
}

std::string* memberFor(ObjectAttributes& attributes, std::string_view key) {
  if (key == "xml-roles") return &attributes.webRoles;
  if (key == "tag") return &attributes.tag;
  if (key == "text-input-type") return &attributes.inputType;
  if (key == "roledescription") return &attributes.roleDescription;
  if (key == "id") return &attributes.identifier;
  return nullptr;
}

// Reads an a{ss} at the message's place.
bool unpackAttributes(sd_bus_message* message, ObjectAttributes& attributes) {
  if (sd_bus_message_enter_container(message, 'a', "{ss}") < 0) return false;
  const char* key = nullptr;
  const char* value = nullptr;
  int more = 0;
  while ((more = sd_bus_message_read(message, "{ss}", &key, &value)) > 0) {
    if (std::string* member = memberFor(attributes, key)) *member = value;
  }
  return more == 0 && sd_bus_message_exit_container(message) >= 0;
}

// Reads the variant behind `key`; other properties and other types are passed over.
bool unpackProperty(sd_bus_message* message, std::string_view key, ObjectProperties& properties) {
  char type = 0;
  const char* contents = nullptr;
  if (sd_bus_message_peek_type(message, &type, &contents) <= 0 || type != 'v') return false;
  const std::string_view signature(contents);
  if (key == "Name" && signature == "s") {
    const char* name = nullptr;
    if (sd_bus_message_read(message, "v", "s", &name) < 0) return false;
    properties.name = name;
    return true;
  }
  if (key == "ChildCount" && signature == "i") {
    std::int32_t count = 0;
    if (sd_bus_message_read(message, "v", "i", &count) < 0) return false;
    properties.childCount = count;
    return true;
  }
  if (key == "Attributes" && signature == "a{ss}") {
    return sd_bus_message_enter_container(message, 'v', contents) >= 0 &&
           unpackAttributes(message, properties.attributes.emplace()) &&
           sd_bus_message_exit_container(message) >= 0;
  }
  return sd_bus_message_skip(message, "v") >= 0;
}

}  // namespace

bool putAhead(AccessibilityBus& bus, const ObjectName& object, Question question) {
  switch (question) {
    case Question::states:
      return askAhead(bus, object, accessible, "GetState");
    case Question::role:
      return askAhead(bus, object, accessible, "GetRole");
    case Question::properties:
      return askAhead(bus, object, propertiesInterface, "GetAll", "s", accessible);
    case Question::attributes:
      return askAhead(bus, object, accessible, "GetAttributes");
    case Question::extents:
      return askAhead(bus, object, component, "GetExtents", "u", onScreen);
  }
  return false;
}

Answer<std::uint32_t> readRole(AccessibilityBus& bus, const BusTarget& target) {
  const BusReply reply = call(bus, target, accessible, "GetRole");
  if (reply.code != code::success) return {reply.code, 0};
  std::uint32_t role = 0;
  const bool good = sd_bus_message_read(reply.message.get(), "u", &role) > 0;
  return unpacked(good, role);
}

Answer<std::uint64_t> readStates(AccessibilityBus& bus, const BusTarget& target) {
  const BusReply reply = call(bus, target, accessible, "GetState");
  if (reply.code != code::success) return {reply.code, 0};
  const void* data = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read_array(reply.message.get(), 'u', &data, &size) < 0) return {};
  std::uint64_t states = 0;
  const auto* words = static_cast<const std::uint32_t*>(data);
  if (size >= 4) states |= words[0];
  if (size >= 8) states |= static_cast<std::uint64_t>(words[1]) << 32;
  return {code::success, states};
}

Answer<ObjectProperties> readProperties(AccessibilityBus& bus, const BusTarget& target) {
  const BusReply reply = call(bus, target, propertiesInterface, "GetAll", "s", accessible);
  if (reply.code != code::success) return {reply.code, {}};
  sd_bus_message* message = reply.message.get();
  ObjectProperties properties;
  if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) return {};
  int more = 0;
  while ((more = sd_bus_message_enter_container(message, 'e', "sv")) > 0) {
    const char* key = nullptr;
    if (sd_bus_message_read(message, "s", &key) <= 0 || !unpackProperty(message, key, properties) ||
        sd_bus_message_exit_container(message) < 0) {
      return {};
    }
  }
  return unpacked(more == 0, std::move(properties));
}

Answer<ObjectAttributes> readAttributes(AccessibilityBus& bus, const BusTarget& target) {
  const BusReply reply = call(bus, target, accessible, "GetAttributes");
  if (reply.code != code::success) return {reply.code, {}};
  ObjectAttributes attributes;
  const bool good = unpackAttributes(reply.message.get(), attributes);
  return unpacked(good, std::move(attributes));
}

Answer<std::vector<ObjectName>> readChildren(AccessibilityBus& bus, const BusTarget& target) {
  const BusReply reply = call(bus, target, accessible, "GetChildren");
  if (reply.code != code::success) return {reply.code, {}};
  sd_bus_message* message = reply.message.get();
  std::vector<ObjectName> children;
  if (sd_bus_message_enter_container(message, 'a', "(so)") < 0) return {};
  const char* name = nullptr;
  const char* path = nullptr;
  int more = 0;
  while ((more = sd_bus_message_read(message, "(so)", &name, &path)) > 0) {
    if (path != nullPath && *name != '\0') children.push_back({name, path});
  }
  return unpacked(more == 0, std::move(children));
}

Answer<std::string> readDocumentAddress(AccessibilityBus& bus, const BusTarget& target) {
  return textOf(call(bus, target, "org.a11y.atspi.Document", "GetAttributeValue", "s", "URI"));
}

Answer<std::string> readText(AccessibilityBus& bus, const BusTarget& target) {
  return textOf(call(bus, target, "org.a11y.atspi.Text", "GetText", "ii", 0, -1));
}

Answer<std::string> readRoleName(AccessibilityBus& bus, const BusTarget& target) {
  return textOf(call(bus, target, accessible, "GetLocalizedRoleName"));
}

Answer<Extents> readExtents(AccessibilityBus& bus, const BusTarget& target) {
  const BusReply reply = call(bus, target, component, "GetExtents", "u", onScreen);
  if (reply.code != code::success) return {reply.code, {}};
  Extents extents;
  const bool good = sd_bus_message_read(reply.message.get(), "(iiii)", &extents.x, &extents.y,
                                        &extents.width, &extents.height) > 0;
  return unpacked(good, extents);
}

Answer<std::string> readOwnAddress(AccessibilityBus& bus, const BusTarget& root) {
  return textOf(call(bus, root, "org.a11y.atspi.Application", "GetApplicationBusAddress"));
}

Answer<std::int32_t> readProcess(AccessibilityBus& bus, const std::string& busName) {
  const BusTarget daemon{{"org.freedesktop.DBus", "/org/freedesktop/DBus"}};
  const BusReply reply =
      call(bus, daemon, "org.freedesktop.DBus", "GetConnectionUnixProcessID", "s", busName.c_str());
  if (reply.code != code::success) return {reply.code, 0};
  std::uint32_t pid = 0;
  const bool good = sd_bus_message_read(reply.message.get(), "u", &pid) > 0;
  return unpacked(good, static_cast<std::int32_t>(pid));
}

}  // namespace callmonitor::platform
