// Clocks and random identifiers.
#include <systemd/sd-id128.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

double secondsOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace

// Stands still while the machine sleeps, so that a night's sleep is not a night of absence.
double systemUptime() {
  return secondsOf(CLOCK_MONOTONIC);
}

double wallClock() {
  return secondsOf(CLOCK_REALTIME);
}

std::string randomUUID() {
  sd_id128_t id{};
  // Identifiers that repeat would merge calls; a kernel without randomness is no place to go on.
  if (sd_id128_randomize(&id) < 0) std::abort();
  std::array<char, SD_ID128_UUID_STRING_MAX> text{};
  std::string result = sd_id128_to_uuid_string(id, text.data());
  std::transform(result.begin(), result.end(), result.begin(), [](char character) {
    return character >= 'a' && character <= 'f' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
  });
  return result;
}

}  // namespace callmonitor::platform
