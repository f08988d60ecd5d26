// Accessibility trees written down once and read twice: by the real code over live elements of the
// scripted desktop, and over the same tree made of plain data.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "evidence/label_scan.h"
#include "evidence/web_areas.h"
#include "fixtures/synthetic_tree.h"
#include "platform/scripted/desktop.h"

namespace callmonitor::test {

// One element of a page. The root's key is "root"; the key of a child is its parent's, a slash and
// its position from 0, unless it has a name of its own.
struct Part {
  std::string name;
  SyntheticElement element;
  std::vector<Part> children;
};

[[nodiscard]] inline Part part(std::string role, std::string title = "") {
  Part made;
  made.element.values["AXRole"] = std::move(role);
  if (!title.empty()) made.element.values["AXTitle"] = std::move(title);
  return made;
}

[[nodiscard]] inline Part with(Part changed, const std::string& attribute,
                               platform::ValueOf<NodeKey> value) {
  changed.element.values[attribute] = std::move(value);
  return changed;
}

[[nodiscard]] inline Part failing(Part changed, const std::string& attribute, std::int32_t code) {
  changed.element.errors[attribute] = code;
  return changed;
}

[[nodiscard]] inline Part holding(Part parent, std::vector<Part> children) {
  parent.children = std::move(children);
  return parent;
}

[[nodiscard]] inline Part named(Part changed, std::string name) {
  changed.name = std::move(name);
  return changed;
}

[[nodiscard]] inline Part described(Part changed, std::string description) {
  return with(std::move(changed), "AXDescription", std::move(description));
}

[[nodiscard]] inline Part subrole(Part changed, std::string subrole) {
  return with(std::move(changed), "AXSubrole", std::move(subrole));
}

// A parent with so many empty groups below it.
[[nodiscard]] inline Part crowded(std::size_t children) {
  return holding(part("AXGroup"), std::vector<Part>(children, part("AXGroup")));
}

// A tree of exactly so many elements, of which none has more than 100 children.
[[nodiscard]] inline Part treeOfSize(std::size_t elements) {
  Part root = part("AXGroup");
  for (std::size_t left = elements - 1; left > 0;) {
    const std::size_t branch = std::min<std::size_t>(left, 100);
    root.children.push_back(crowded(branch - 1));
    left -= branch;
  }
  return root;
}

// Adds a page to a tree of plain data under its keys.
inline void addTo(SyntheticTree& tree, const Part& page, const std::string& key = "root") {
  SyntheticElement element = page.element;
  std::vector<NodeKey> children;
  for (std::size_t i = 0; i < page.children.size(); ++i) {
    const Part& child = page.children[i];
    children.push_back({child.name.empty() ? key + "/" + std::to_string(i) : child.name});
    addTo(tree, child, children.back().key);
  }
  if (!children.empty()) element.values["AXChildren"] = std::move(children);
  tree[key] = std::move(element);
}

[[nodiscard]] inline SyntheticTree treeOf(const Part& page) {
  SyntheticTree tree;
  addTo(tree, page);
  return tree;
}

// The same value with live elements in the place of keys.
[[nodiscard]] inline platform::ValueOf<Element> liveValue(const platform::ValueOf<NodeKey>& value) {
  if (const auto* key = std::get_if<NodeKey>(&value)) return scripted::element(key->key);
  if (const auto* keys = std::get_if<std::vector<NodeKey>>(&value)) {
    std::vector<Element> elements;
    for (const NodeKey& key : *keys) elements.push_back(scripted::element(key.key));
    return elements;
  }
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* address = std::get_if<platform::Address>(&value)) return *address;
  if (const auto* flag = std::get_if<bool>(&value)) return *flag;
  if (std::holds_alternative<platform::OtherType>(value)) return platform::OtherType{};
  return std::monostate{};
}

// Starts a desktop that holds this page alone; its root is the element "root".
inline void show(const Part& page) {
  scripted::reset();
  for (const auto& [key, element] : treeOf(page)) {
    scripted::Attributes& attributes = scripted::desktop().elements[key];
    for (const auto& [name, value] : element.values) {
      attributes[name] = {{platform::code::success, liveValue(value)}, 0};
    }
    for (const auto& [name, code] : element.errors) attributes[name] = scripted::codeAnswer(code);
  }
}

// Lets one attribute of the page on show take its time.
inline void slow(const std::string& key, const std::string& attribute, double seconds) {
  scripted::desktop().messageTimeout = 1000;
  scripted::desktop().elements[key][attribute].delay = seconds;
}

// The attributes that an element of the scripted desktop was asked for, in order.
[[nodiscard]] inline std::vector<std::string> readsOf(const std::string& key) {
  const std::string start = "read " + key + " ";
  std::vector<std::string> names;
  for (const std::string& call : scripted::desktop().calls) {
    if (call.starts_with(start)) names.push_back(call.substr(start.size()));
  }
  return names;
}

[[nodiscard]] inline bool wasRead(const std::string& key) {
  return !readsOf(key).empty();
}

// How many elements of the scripted desktop were asked for an attribute.
[[nodiscard]] inline std::ptrdiff_t readsNamed(std::string_view attribute) {
  return std::ranges::count_if(scripted::desktop().calls, [&](const std::string& call) {
    return call.starts_with("read ") && call.ends_with(" " + std::string(attribute));
  });
}

struct ScanSettings {
  bool browser = false;
  bool nativeZoomWindow = false;
  bool previewRecovery = false;
};

inline constexpr ScanSettings native{};
inline constexpr ScanSettings browser{true, false, false};
inline constexpr ScanSettings zoomWindow{false, true, false};
inline constexpr ScanSettings preview{false, false, true};

// A scan of the page on show that no deadline but its own half second ends.
[[nodiscard]] inline Evidence scanShown(const ScanSettings& settings = {}) {
  return labels(scripted::element("root"), settings.browser, settings.nativeZoomWindow,
                settings.previewRecovery, /*pollDeadline=*/1e9);
}

// A live scan of a page.
[[nodiscard]] inline Evidence scanLive(const Part& page, const ScanSettings& settings = {}) {
  show(page);
  return scanShown(settings);
}

// A scan of the page as plain data, with all the time in the world unless told otherwise.
template <class WithinDeadline>
[[nodiscard]] Evidence scanData(const Part& page, const ScanSettings& settings, int budget,
                                WithinDeadline withinDeadline) {
  const SyntheticTree tree = treeOf(page);
  const NodeKey root{"root"};
  const auto read = [&](const NodeKey& node) {
    return readLabelSnapshot(
               node, settings.nativeZoomWindow, !settings.browser && settings.previewRecovery,
               settings.browser && node == root, [](const std::string&) {},
               [&](const NodeKey& key, std::string_view name) {
                 return readSynthetic(tree, key, name);
               })
        .snapshot;
  };
  return scanLabels(root, settings.browser, settings.nativeZoomWindow, budget, withinDeadline,
                    read);
}

[[nodiscard]] inline Evidence scanData(const Part& page, const ScanSettings& settings = {},
                                       int budget = labelScanBudget) {
  return scanData(page, settings, budget, [] { return true; });
}

}  // namespace callmonitor::test
