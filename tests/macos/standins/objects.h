// The objects that the stand-ins of the system frameworks hand out, and who holds them.
//
// References are counted, not objects, and in two columns: those that the code under test holds and
// those of the stand-ins (containers, pools, run loop). So a reference that is never given back
// shows, and one that is given back without having been owned ends the process at once, even while
// something else still keeps the object alive. So does any use of an object that is gone.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/platform.h"

namespace callmonitor::standins {

struct Object;

struct Gone {};
struct Text {
  std::u16string units;
};
struct Number {
  std::variant<std::int64_t, double> value;
};
struct Flag {
  bool value = false;
};
// A value of a type that the code under test has no name for, such as a point or a range.
struct Geometry {};
struct Url {
  Object* string = nullptr;  // kept; what it was made from, perhaps relative
  std::u16string absolute;
};
struct List {
  std::vector<Object*> items;  // kept; null where an entry is no object
};
struct Dictionary {
  std::map<std::u16string, Object*> entries;  // kept
};
struct Uuid {
  std::uint64_t number = 0;
};
// One reference to an element. Two of one key are equal and yet two.
struct ElementHandle {
  std::string key;
  double messageTimeout = 0;  // seconds; 0 for the system's own
};
struct Timer {
  double due = 0;  // uptime seconds
  CFRunLoopTimerCallBack callOut = nullptr;
  CFRunLoopTimerContext context{};
};
struct RunLoop {};
struct Date {
  double since1970 = 0;
};
struct RunningApplication {
  platform::Application values;
};
// An object of which there is one, or a class.
struct Named {
  std::string name;
};

using Payload = std::variant<Gone, Text, Number, Flag, Geometry, Url, List, Dictionary, Uuid,
                             ElementHandle, Timer, RunLoop, Date, RunningApplication, Named>;

struct Object {
  Payload payload;
  long held = 0;          // references of the code under test
  long kept = 0;          // references of the stand-ins
  bool immortal = false;  // a constant: counted, and never gone
};

// Ends the process with a message: the code under test broke a rule.
[[noreturn]] void refuse(const std::string& what);

// Every object that the code under test makes comes from the usual allocator.
void requireDefault(CFAllocatorRef allocator);

// A new object that nobody has a reference to yet.
[[nodiscard]] Object* made(Payload payload);
// An object that is never gone.
[[nodiscard]] Object* constant(Payload payload);

[[nodiscard]] Object* madeText(std::string_view utf8);
[[nodiscard]] Object* madeNumber(std::int64_t value);
[[nodiscard]] Object* madeFraction(double value);
[[nodiscard]] Object* madeList(const std::vector<Object*>& items);
[[nodiscard]] Object* madeUrl(std::string_view utf8, std::string_view absolute);
[[nodiscard]] Object* flagObject(bool value);

// The object behind a reference that the code under test uses. A null one or one to an object that
// is gone is refused.
[[nodiscard]] Object& used(CFTypeRef reference);

// The payload of an object that has to be of one type.
template <class Wanted>
[[nodiscard]] Wanted& usedAs(CFTypeRef reference) {
  auto* payload = std::get_if<Wanted>(&used(reference).payload);
  if (payload == nullptr) refuse("an object of another type was used");
  return *payload;
}

// Gives the code under test a reference that it has to give back; null stays null.
[[nodiscard]] const void* handedOut(Object* object);

// References of the stand-ins' own. Null is nothing.
void keep(Object* object);
void drop(Object* object);
// Keeps an object until the innermost pool ends. Refused where there is no pool.
void keepInPool(Object* object);

// How many references the code under test holds, and on how many objects of any kind there is a
// reference at all, constants left out.
[[nodiscard]] long heldReferences();
[[nodiscard]] long livingObjects();
[[nodiscard]] std::size_t openPools();

void* openPool();
void closePool(void* pool);

}  // namespace callmonitor::standins
