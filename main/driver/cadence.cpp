#include "driver/cadence.h"

#include <algorithm>
#include <vector>

#include "identity/applications.h"

namespace callmonitor {

double ScanCadence::interval(std::optional<std::int32_t> pid,
                             const std::optional<std::string>& front, bool tracked, double now) {
  if (pid != lastPID) {
    *this = ScanCadence();
    lastPID = pid;
  }
  if (front) {
    if (lastFront != front) {
      lastFront = front;
      fastUntil = now + suspectedScanWindow;
    }
    if (!tracked && now < fastUntil) return suspectedScanInterval;
  }
  return idleScanInterval;
}

double nextScanDelay(double interval, double elapsed) {
  return std::max(interval - elapsed, minimumScanGap);
}

int scanPriority(std::string_view bundleID, bool tracked, bool frontmost) {
  if (frontmost && providers.contains(bundleID)) return 0;
  return tracked ? 1 : 2;
}

std::optional<std::string> suspectedFront(const AppSample* sample, bool tracked) {
  if (sample == nullptr || tracked) return std::nullopt;
  std::vector<std::string> shown;
  for (const Surface& surface : sample->surfaces) {
    if (surface.conference.provider == "application" || surface.state == CallState::left) continue;
    shown.push_back(surface.conference.key + "|" + surface.title);
  }
  if (shown.empty()) return std::nullopt;
  std::ranges::sort(shown);
  std::string fingerprint = std::to_string(sample->pid) + ":";
  for (std::size_t i = 0; i < shown.size(); ++i) {
    if (i > 0) fingerprint += ',';
    fingerprint += shown[i];
  }
  return fingerprint;
}

}  // namespace callmonitor
