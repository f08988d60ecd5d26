// Reading and parsing are apart, so that the parsers are tested with texts.
#include "platform/linux/process_files.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <memory>
#include <system_error>
#include <utility>

namespace callmonitor::platform {
namespace {

constexpr std::size_t longestFile = 1 << 20;

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
  Number value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::vector<std::string_view> splitAtSpaces(std::string_view text) {
  std::vector<std::string_view> fields;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(" \n"), text.size());
    if (end > 0) fields.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return fields;
}

// A file's text, or the errno that kept it from being read.
struct FileText {
  int error = 0;
  std::string text;
};

FileText fileText(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return {errno, {}};
  FileText result;
  std::array<char, 4096> buffer{};
  while (result.text.size() < longestFile) {
    const ssize_t got = read(file, buffer.data(), buffer.size());
    if (got < 0) result.error = errno;
    if (got <= 0) break;
    result.text.append(buffer.data(), static_cast<std::size_t>(got));
  }
  close(file);
  return result;
}

bool ended(char state) {
  return state == 'Z' || state == 'X';
}

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

// How the threads of a process stand whose first one has ended.
OtherThreads otherThreads(std::int32_t pid) {
  const std::string path = "/proc/" + std::to_string(pid) + "/task";
  const std::unique_ptr<DIR, CloseDirectory> directory(opendir(path.c_str()));
  if (!directory) return errno == ENOENT ? OtherThreads::none : OtherThreads::unknown;
  bool known = true;
  errno = 0;
  while (const dirent* entry = readdir(directory.get())) {
    const auto thread = numberOf<std::int32_t>(entry->d_name);
    if (!thread || *thread == pid) continue;
    const FileText file = fileText(path + "/" + entry->d_name + "/stat");
    const auto stat = parseProcessStat(file.text);
    if (stat && !ended(stat->state)) return OtherThreads::living;
    if (!stat && file.error != ENOENT && file.error != ESRCH) known = false;
    errno = 0;
  }
  return known && errno == 0 ? OtherThreads::none : OtherThreads::unknown;
}

const std::optional<std::int64_t>& bootTime() {
  static const std::optional<std::int64_t> time = [] {
    const auto text = readFile("/proc/stat");
    return text ? parseBootTime(*text) : std::nullopt;
  }();
  return time;
}

}  // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
  const std::size_t nameEnd = text.rfind(')');
  if (nameEnd == std::string_view::npos) return std::nullopt;
  // Field 3 (state) is the first behind the name; 4 is the parent and 22 the start time.
  const auto fields = splitAtSpaces(text.substr(nameEnd + 1));
  constexpr std::size_t startField = 22 - 3;
  if (fields.size() <= startField || fields[0].size() != 1) return std::nullopt;
  const auto parent = numberOf<std::int32_t>(fields[1]);
  const auto start = numberOf<std::uint64_t>(fields[startField]);
  if (!parent || !start) return std::nullopt;
  return ProcessStat{fields[0][0], *parent, *start};
}

std::optional<std::int64_t> parseBootTime(std::string_view text) {
  constexpr std::string_view key = "btime ";
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    if (line.starts_with(key)) return numberOf<std::int64_t>(line.substr(key.size()));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return std::nullopt;
}

std::vector<std::string> splitAtNul(std::string_view text) {
  std::vector<std::string> parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\0'), text.size());
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

ProcessLook processLook(int error, std::string_view text,
                        const std::function<OtherThreads()>& others) {
  // A process that ends between the opening and the reading of its file is "no such process" too.
  if (error == ENOENT || error == ESRCH) return {true, std::nullopt};
  if (error != 0) return {};
  const auto stat = parseProcessStat(text);
  if (!stat) return {};
  if (!ended(stat->state)) return {false, stat};
  // The state is that of the first thread, which a process may outlive.
  switch (others()) {
    case OtherThreads::none:
      return {true, std::nullopt};
    case OtherThreads::living:
      return {false, stat};
    case OtherThreads::unknown:
      break;
  }
  return {};
}

ProcessLook lookAtProcess(std::int32_t pid) {
  const FileText file = fileText("/proc/" + std::to_string(pid) + "/stat");
  return processLook(file.error, file.text, [pid] { return otherThreads(pid); });
}

std::optional<double> launchTime(const ProcessStat& stat) {
  static const long ticksPerSecond = sysconf(_SC_CLK_TCK);
  const auto& boot = bootTime();
  if (!boot || ticksPerSecond <= 0) return std::nullopt;
  return static_cast<double>(*boot) +
         static_cast<double>(stat.startTicks) / static_cast<double>(ticksPerSecond);
}

std::optional<std::string> readFile(const std::string& path) {
  FileText file = fileText(path);
  if (file.error != 0) return std::nullopt;
  return std::move(file.text);
}

std::optional<std::string> readLink(const std::string& path) {
  std::array<char, 4096> buffer{};
  const ssize_t length = readlink(path.c_str(), buffer.data(), buffer.size());
  if (length <= 0) return std::nullopt;
  return std::string(buffer.data(), static_cast<std::size_t>(length));
}

}  // namespace callmonitor::platform
