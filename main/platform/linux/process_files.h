// What the kernel tells about a process under /proc. Everything is read afresh and is absent where
// the process is gone or may not be looked at.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::platform {

// The fields of /proc/PID/stat that are used here.
struct ProcessStat {
  char state = '?';
  std::int32_t parent = 0;
  std::uint64_t startTicks = 0;  // since boot, in clock ticks
};

// Parses one line of /proc/PID/stat. The process's own name stands in parentheses and may hold
// spaces and parentheses itself, so the fields are counted from the last ")". Absent if malformed.
[[nodiscard]] std::optional<ProcessStat> parseProcessStat(std::string_view text);

// Boot time in whole seconds since 1970, from the text of /proc/stat; absent without its line.
[[nodiscard]] std::optional<std::int64_t> parseBootTime(std::string_view text);

// Splits the NUL-separated texts of /proc/PID/cmdline or environ.
[[nodiscard]] std::vector<std::string> splitAtNul(std::string_view text);

// What one look at a process said. A look that failed, for want of a file descriptor or of memory,
// says nothing: neither `gone` nor a stat.
struct ProcessLook {
  // There is no such process, or all of it has ended and it is merely not yet reaped.
  bool gone = false;
  std::optional<ProcessStat> stat;  // of a living process
};

// Whether a process has living threads beside its first one.
enum class OtherThreads { none, living, unknown };

// The meaning of an attempt to read /proc/PID/stat: `error` is its errno, 0 where it gave `text`.
// `others` is asked only about a process whose first thread has ended.
[[nodiscard]] ProcessLook processLook(int error, std::string_view text,
                                      const std::function<OtherThreads()>& others);

// Looks at a process now.
[[nodiscard]] ProcessLook lookAtProcess(std::int32_t pid);

// Seconds since 1970 at which the process began, to the kernel's clock tick. Boot time is read
// once, so that the double is the same at every reading for the life of the process even while the
// wall clock is being corrected.
[[nodiscard]] std::optional<double> launchTime(const ProcessStat& stat);

// The whole file, at most a megabyte of it; absent when it cannot be read.
[[nodiscard]] std::optional<std::string> readFile(const std::string& path);

// The target of a symbolic link; absent when it cannot be read.
[[nodiscard]] std::optional<std::string> readLink(const std::string& path);

}  // namespace callmonitor::platform
