// The window server's list.
#include <CoreGraphics/CoreGraphics.h>

#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"
#include "macos/standins/text.h"

namespace callmonitor::standins {
namespace {

Object* key(std::u16string name) {
  return constant(Text{std::move(name)});
}

Object* entryOf(const platform::OnScreenWindow& window) {
  Dictionary entry;
  const auto put = [&entry](CFStringRef name, Object* value) {
    keep(value);
    entry.entries[usedAs<Text>(name).units] = value;
  };
  if (window.ownerPid) put(kCGWindowOwnerPID, madeNumber(*window.ownerPid));
  if (window.name) put(kCGWindowName, madeText(*window.name));
  if (window.layer) put(kCGWindowLayer, madeNumber(*window.layer));
  if (window.number) put(kCGWindowNumber, madeNumber(*window.number));
  return made(std::move(entry));
}

Object* worldsList() {
  const auto windows = screenOf(desktop().world);
  if (!windows) return nullptr;
  std::vector<Object*> entries;
  entries.reserve(windows->size());
  for (const platform::OnScreenWindow& window : *windows) entries.push_back(entryOf(window));
  return madeList(entries);
}

}  // namespace
}  // namespace callmonitor::standins

using namespace callmonitor::standins;

extern "C" {

const CFStringRef kCGWindowOwnerPID = reinterpret_cast<CFStringRef>(key(u"kCGWindowOwnerPID"));
const CFStringRef kCGWindowName = reinterpret_cast<CFStringRef>(key(u"kCGWindowName"));
const CFStringRef kCGWindowLayer = reinterpret_cast<CFStringRef>(key(u"kCGWindowLayer"));
const CFStringRef kCGWindowNumber = reinterpret_cast<CFStringRef>(key(u"kCGWindowNumber"));

CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) {
  if (option != (kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements) ||
      relativeToWindow != kCGNullWindowID) {
    refuse("another window list was asked for");
  }
  arrive("CGWindowListCopyWindowInfo");
  keepInPool(made(Geometry{}));
  const auto& given = desktop().windowList;
  return static_cast<CFArrayRef>(handedOut(given ? given() : worldsList()));
}

}  // extern "C"
