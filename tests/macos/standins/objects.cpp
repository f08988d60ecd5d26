#include "macos/standins/objects.h"

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <memory>
#include <utility>

#include "macos/standins/text.h"

namespace callmonitor::standins {
namespace {

// Objects that are gone stay recognisable for a while.
constexpr std::size_t graves = 20000;

struct Books {
  long held = 0;
  long living = 0;
  std::deque<std::unique_ptr<Object>> gone;
  std::vector<std::unique_ptr<std::vector<Object*>>> pools;
};

Books& books() {
  // Constants are made before main begins, whatever the order of files.
  static Books instance;
  return instance;
}

void dropContents(const Payload& payload) {
  if (const auto* list = std::get_if<List>(&payload)) {
    for (Object* item : list->items) drop(item);
  } else if (const auto* dictionary = std::get_if<Dictionary>(&payload)) {
    for (const auto& [key, value] : dictionary->entries) drop(value);
  } else if (const auto* url = std::get_if<Url>(&payload)) {
    drop(url->string);
  }
}

void endIfUnreferenced(Object* object) {
  if (object->immortal || object->held > 0 || object->kept > 0) return;
  const Payload payload = std::exchange(object->payload, Gone{});
  dropContents(payload);
  Books& all = books();
  --all.living;
  all.gone.emplace_back(object);
  if (all.gone.size() > graves) all.gone.pop_front();
}

}  // namespace

void refuse(const std::string& what) {
  std::fprintf(stderr, "stand-in: %s\n", what.c_str());
  std::abort();
}

void requireDefault(CFAllocatorRef allocator) {
  if (allocator != kCFAllocatorDefault) refuse("another allocator than the default was used");
}

Object* made(Payload payload) {
  ++books().living;
  return new Object{std::move(payload)};
}

Object* constant(Payload payload) {
  return new Object{std::move(payload), 0, 0, /*immortal=*/true};
}

Object* madeText(std::string_view utf8) {
  const auto units = utf16Of(utf8);
  if (!units) refuse("a text of the test is not valid UTF-8");
  return made(Text{*units});
}

Object* madeNumber(std::int64_t value) {
  return made(Number{value});
}

Object* madeFraction(double value) {
  return made(Number{value});
}

Object* madeList(const std::vector<Object*>& items) {
  for (Object* item : items) keep(item);
  return made(List{items});
}

Object* madeUrl(std::string_view utf8, std::string_view absolute) {
  Object* string = madeText(utf8);
  keep(string);
  return made(Url{string, *utf16Of(absolute)});
}

Object* flagObject(bool value) {
  static Object* const yes = constant(Flag{true});
  static Object* const no = constant(Flag{false});
  return value ? yes : no;
}

Object& used(CFTypeRef reference) {
  auto* object = static_cast<Object*>(const_cast<void*>(reference));
  if (object == nullptr) refuse("NULL was used as an object");
  if (std::holds_alternative<Gone>(object->payload)) refuse("an object was used after its release");
  return *object;
}

const void* handedOut(Object* object) {
  if (object == nullptr) return nullptr;
  ++object->held;
  if (!object->immortal) ++books().held;
  return object;
}

void keep(Object* object) {
  if (object != nullptr) ++object->kept;
}

void drop(Object* object) {
  if (object == nullptr) return;
  --object->kept;
  endIfUnreferenced(object);
}

void keepInPool(Object* object) {
  if (object == nullptr) return;
  if (books().pools.empty()) refuse("an object was left to a pool, and there is none");
  keep(object);
  books().pools.back()->push_back(object);
}

long heldReferences() {
  return books().held;
}

long livingObjects() {
  return books().living;
}

std::size_t openPools() {
  return books().pools.size();
}

void* openPool() {
  books().pools.push_back(std::make_unique<std::vector<Object*>>());
  return books().pools.back().get();
}

void closePool(void* pool) {
  auto& pools = books().pools;
  if (pools.empty() || pools.back().get() != pool) refuse("pools were not closed in their order");
  const auto objects = std::move(pools.back());
  pools.pop_back();
  for (Object* object : *objects) drop(object);
}

namespace {

void giveBack(Object& object) {
  if (object.held == 0) refuse("a reference was released that is not owned");
  --object.held;
  if (!object.immortal) --books().held;
  endIfUnreferenced(&object);
}

}  // namespace
}  // namespace callmonitor::standins

namespace standins = callmonitor::standins;

extern "C" {

CFTypeRef CFRetain(CFTypeRef object) {
  return standins::handedOut(&standins::used(object));
}

void CFRelease(CFTypeRef object) {
  standins::giveBack(standins::used(object));
}

CFTypeID CFGetTypeID(CFTypeRef object) {
  return standins::used(object).payload.index();
}

Boolean CFEqual(CFTypeRef left, CFTypeRef right) {
  const auto& one = standins::used(left).payload;
  const auto& other = standins::used(right).payload;
  const auto* element = std::get_if<standins::ElementHandle>(&one);
  const auto* otherElement = std::get_if<standins::ElementHandle>(&other);
  if (element != nullptr && otherElement != nullptr) return element->key == otherElement->key;
  return &one == &other;
}

CFHashCode CFHash(CFTypeRef object) {
  const auto& payload = standins::used(object).payload;
  const auto* element = std::get_if<standins::ElementHandle>(&payload);
  return element != nullptr ? std::hash<std::string>()(element->key)
                            : std::hash<const void*>()(&payload);
}

}  // extern "C"
