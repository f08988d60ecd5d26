// The whole seam between the decision code and a desktop.
//
// The decision code knows nothing of an operating system but what stands here, and the build links
// exactly one implementation. A platform reports what it read and decides nothing about a call.
//
// Rules that every implementation keeps:
//  - Everything runs on one thread. Nothing here throws.
//  - Absent is not empty: an absent list means "not known", an empty list means "known to be none".
//  - Text that crosses the seam is valid UTF-8; a platform repairs or refuses anything else.
//  - Accessibility failures are codes beside the value, never exceptions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace callmonitor::platform {

// Result codes of an accessibility message. The figures are those of the macOS accessibility
// interface, which every platform maps its own errors to; a code that is not listed is a failure.
namespace code {
inline constexpr std::int32_t success = 0;
inline constexpr std::int32_t failure = -25200;
inline constexpr std::int32_t illegalArgument = -25201;
// The element no longer exists. Only a live answer that says so may give it: a hung application or
// a lost connection is `cannotComplete`.
inline constexpr std::int32_t invalidElement = -25202;
// The application did not answer within the messaging time-out, or cannot be reached.
inline constexpr std::int32_t cannotComplete = -25204;
inline constexpr std::int32_t attributeUnsupported = -25205;
inline constexpr std::int32_t noValue = -25212;
}  // namespace code

// What an element refers to; each platform defines it for itself.
struct ElementReference;

// A handle on one accessibility element of another application. Handles are cheap to copy, and the
// reference goes when the last handle goes. Two handles are equal when the platform says that they
// mean the same element, even if they were obtained by different reads. An element that no longer
// exists keeps its identity. A default-made handle means no element: it is equal to its like only
// and answers `illegalArgument`.
struct Element {
  std::shared_ptr<const ElementReference> reference;
};
[[nodiscard]] bool operator==(const Element& left, const Element& right);
// Equal handles have equal hashes.
[[nodiscard]] std::size_t hashOf(const Element& element);

// A web address, kept apart from plain text because some clients give it as a value of its own
// type.
struct Address {
  std::string text;
};

// A value of a type that nobody here reads, such as a number or a size.
struct OtherType {};

// The value of one attribute. The node type is `Element` for a live desktop and a plain key in the
// built-in checks, so that one walk serves both.
template <class Node>
using ValueOf =
    std::variant<std::monostate, std::string, Address, bool, Node, std::vector<Node>, OtherType>;

// The answer to one read. A value is meaningful only beside `code::success`; success with
// `std::monostate` means that the read succeeded and gave nothing.
template <class Node>
struct ReadingOf {
  std::int32_t code = code::success;
  ValueOf<Node> value;
};
using Reading = ReadingOf<Element>;

// One running application.
struct Application {
  std::int32_t pid = 0;
  // Seconds since 1970; the same double at every reading for the life of the process. Absent when
  // the system does not know it.
  std::optional<double> launchedAt;
  // Absent when the application has none.
  std::optional<std::string> bundleIdentifier;
  // A user-facing application with windows of its own, as opposed to a helper or a panel.
  bool regular = false;
};

// One window of the window server's list. An absent field was missing or had a foreign type.
struct OnScreenWindow {
  std::optional<std::int32_t> ownerPid;
  std::optional<std::string> name;
  std::optional<std::int64_t> layer;  // 0 is a normal window
  std::optional<std::int64_t> number;
};

// One process that the sound system knows.
struct AudioProcess {
  std::string bundle;   // bundle identifier, may be empty
  bool input = false;   // is capturing now
  bool output = false;  // is playing now
};

// Called once before the first cycle of monitoring mode and never in a fixture mode: connects to
// the desktop and makes the changes to it that reading needs. A desktop that is missing is not an
// error here; it shows as not trusted.
void prepareMonitoring();

// The same for whoever only looks, called in its place: connects to the desktop and changes nothing
// on it, so that what has to be switched on before it can be read stays as it is.
void prepareLooking();

// Runs `cycle` once, at once. A platform may keep per-cycle memory (pools, applications that hang)
// that lives exactly as long as this call.
void inCycle(const std::function<void()>& cycle);

// Whether this process may read other applications' accessibility trees. Never asks the user.
[[nodiscard]] bool accessibilityTrusted();

// The running applications in the desktop's own order, which is stable from call to call; one entry
// for each process id.
[[nodiscard]] std::vector<Application> runningApplications();
// Absent when no running application has this process id.
[[nodiscard]] std::optional<Application> runningApplication(std::int32_t pid);
// Absent when no application is in front or the desktop cannot tell.
[[nodiscard]] std::optional<Application> frontmostApplication();

// The accessibility element of an application. `messageTimeout` (seconds) is the longest that any
// one message to this application's elements may take. Never fails: errors show at the first read.
[[nodiscard]] Element applicationElement(std::int32_t pid, double messageTimeout);

// Reads one attribute by its macOS name ("AXRole", "AXTitle", ...). An attribute that the platform
// or the element does not have answers `attributeUnsupported`. A list that holds anything but
// elements is `OtherType`.
[[nodiscard]] Reading readAttribute(const Element& element, std::string_view name);

// Sets one Boolean attribute and gives the result code.
[[nodiscard]] std::int32_t setAttribute(const Element& element, std::string_view name, bool value);

// No walk descends into more children of one element than this.
inline constexpr std::size_t walkChildCap = 100;

// Hints that a depth-first walk of `root` starts now. It ends no later than `deadline` (uptime
// seconds) and takes at most `budget` elements. The first thing it takes is the root. Of the
// elements it knows it always takes the one that it came to know last, and having read the
// "AXChildren" of the element that it took, it knows the first `walkChildCap` of them in their
// order: so the last child comes first. It may leave a subtree out or stop. It reads all it wants
// of an element, each attribute once, before it takes another. A second hint ends the first walk.
//
// Neither changes anything about what reads answer, and a platform may ignore them.
//
// A scan reads what an element says, down to its "AXChildren".
void expectScan(const Element& root, double deadline, int budget);
// A search reads no more than "AXHidden", "AXRole" and "AXChildren".
void expectSearch(const Element& root, double deadline, int budget);

// The windows on the screen, without desktop elements. Absent when the list cannot be had.
[[nodiscard]] std::optional<std::vector<OnScreenWindow>> onScreenWindows();

// The sound system's processes, complete or absent: a partial list would make a client look silent.
[[nodiscard]] std::optional<std::vector<AudioProcess>> audioProcesses();

// Monotonic seconds since boot: every interval, deadline and de-duplication is measured on it.
[[nodiscard]] double systemUptime();
// Seconds since 1970, with fractions.
[[nodiscard]] double wallClock();
// A fresh random identifier in canonical upper-case text form.
[[nodiscard]] std::string randomUUID();

// Runs `action` once on the run loop, `seconds` from now. Never runs it before `runLoop()` runs.
void afterDelay(double seconds, std::function<void()> action);
// Runs timers until the process ends; returns only when nothing can ever happen any more.
void runLoop();

}  // namespace callmonitor::platform

template <>
struct std::hash<callmonitor::platform::Element> {
  std::size_t operator()(const callmonitor::platform::Element& element) const {
    return callmonitor::platform::hashOf(element);
  }
};
