// Strings, numbers, addresses, collections and identifiers.
#include <CoreFoundation/CoreFoundation.h>

#include <cmath>
#include <cstdio>

#include "macos/standins/desktop.h"
#include "macos/standins/objects.h"
#include "macos/standins/text.h"

namespace callmonitor::standins {
namespace {

// Types are known by their place in the payload.
template <class Wanted>
CFTypeID typeOf() {
  static const CFTypeID type = Payload(Wanted{}).index();
  return type;
}

void requireUtf8(CFStringEncoding encoding) {
  if (encoding != kCFStringEncodingUTF8) refuse("an encoding other than UTF-8 was asked for");
}

// An external form begins with a byte order mark.
void requireInternal(Boolean isExternalRepresentation) {
  if (isExternalRepresentation != 0) refuse("a text in its external form is not modelled");
}

}  // namespace
}  // namespace callmonitor::standins

using namespace callmonitor::standins;

extern "C" {

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFBooleanRef kCFBooleanTrue = reinterpret_cast<CFBooleanRef>(flagObject(true));
const CFBooleanRef kCFBooleanFalse = reinterpret_cast<CFBooleanRef>(flagObject(false));
const CFTimeInterval kCFAbsoluteTimeIntervalSince1970 = 978307200.0;

CFTypeID CFStringGetTypeID() {
  return typeOf<Text>();
}
CFTypeID CFBooleanGetTypeID() {
  return typeOf<Flag>();
}
CFTypeID CFNumberGetTypeID() {
  return typeOf<Number>();
}
CFTypeID CFURLGetTypeID() {
  return typeOf<Url>();
}
CFTypeID CFArrayGetTypeID() {
  return typeOf<List>();
}
CFTypeID CFDictionaryGetTypeID() {
  return typeOf<Dictionary>();
}

CFIndex CFStringGetLength(CFStringRef string) {
  return static_cast<CFIndex>(usedAs<Text>(string).units.size());
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex count,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation) {
  requireDefault(allocator);
  requireUtf8(encoding);
  requireInternal(isExternalRepresentation);
  const std::string_view text(reinterpret_cast<const char*>(bytes),
                              static_cast<std::size_t>(count));
  const auto units = utf16Of(text);
  if (!units) return nullptr;
  return static_cast<CFStringRef>(handedOut(made(Text{*units})));
}

// Stops before a character that does not fit, and before one that has no UTF-8 form.
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternalRepresentation, UInt8* buffer,
                         CFIndex bufferSize, CFIndex* usedSize) {
  requireUtf8(encoding);
  requireInternal(isExternalRepresentation);
  if (lossByte != 0) refuse("a byte in place of what cannot be converted is not modelled");
  const std::u16string& units = usedAs<Text>(string).units;
  if (range.location < 0 || range.length < 0 ||
      range.location + range.length > static_cast<CFIndex>(units.size())) {
    refuse("a range outside of its string was asked for");
  }
  const std::u16string_view part = std::u16string_view(units).substr(
      static_cast<std::size_t>(range.location), static_cast<std::size_t>(range.length));
  std::size_t at = 0;
  CFIndex written = 0;
  while (at < part.size()) {
    const auto character = characterAt(part, at);
    if (!character) break;
    if (written + static_cast<CFIndex>(character->utf8.size()) > bufferSize) break;
    for (const char byte : character->utf8) buffer[written++] = static_cast<UInt8>(byte);
    at += character->units;
  }
  if (usedSize != nullptr) *usedSize = written;
  return static_cast<CFIndex>(at);
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  return usedAs<Flag>(boolean).value ? 1 : 0;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value) {
  if (type != kCFNumberSInt64Type) refuse("a type of number was asked for that is not modelled");
  auto& result = *static_cast<SInt64*>(value);
  const auto& held = usedAs<Number>(number).value;
  if (const auto* whole = std::get_if<std::int64_t>(&held)) {
    result = *whole;
    return 1;
  }
  // What is lost leaves an approximate value behind.
  constexpr double limit = 9223372036854775808.0;
  const double fraction = std::get<double>(held);
  const bool fits = fraction >= -limit && fraction < limit;
  result = fits ? static_cast<SInt64>(fraction) : 0;
  return fits && std::trunc(fraction) == fraction ? 1 : 0;
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef url) {
  const Url& held = usedAs<Url>(url);
  if (held.absolute.empty()) return nullptr;
  Object* string = made(Text{held.absolute});
  keep(string);
  return static_cast<CFURLRef>(handedOut(made(Url{string, held.absolute})));
}

CFStringRef CFURLGetString(CFURLRef url) {
  return reinterpret_cast<CFStringRef>(usedAs<Url>(url).string);
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  return static_cast<CFIndex>(usedAs<List>(array).items.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  const auto& items = usedAs<List>(array).items;
  if (index < 0 || index >= static_cast<CFIndex>(items.size())) {
    refuse("an entry outside of its list was asked for");
  }
  return items[static_cast<std::size_t>(index)];
}

const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  const auto& entries = usedAs<Dictionary>(dictionary).entries;
  const auto found = entries.find(usedAs<Text>(key).units);
  return found == entries.end() ? nullptr : found->second;
}

CFUUIDRef CFUUIDCreate(CFAllocatorRef allocator) {
  requireDefault(allocator);
  if (desktop().identifiersFail) return nullptr;
  return static_cast<CFUUIDRef>(handedOut(made(Uuid{++desktop().identifiersMade})));
}

CFStringRef CFUUIDCreateString(CFAllocatorRef allocator, CFUUIDRef uuid) {
  requireDefault(allocator);
  const std::uint64_t number = usedAs<Uuid>(uuid).number;
  if (desktop().identifierTextsFail) return nullptr;
  char text[40];
  std::snprintf(text, sizeof text, "ABCDEF00-0000-4000-8000-%012llX",
                static_cast<unsigned long long>(number));
  return static_cast<CFStringRef>(handedOut(madeText(text)));
}

}  // extern "C"
