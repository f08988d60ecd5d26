// The scans that one tick has taken, so that a second look at the same root in the same way within
// the tick costs nothing.
#pragma once

#include <vector>

#include "evidence/evidence.h"
#include "platform/platform.h"

namespace callmonitor {

// What was scanned and how; a scan in another way may find something else.
struct ScanRequest {
  platform::Element root;
  bool browser = false;
  bool nativeZoomWindow = false;
  bool nativeZoomPreviewRecovery = false;
  friend bool operator==(const ScanRequest&, const ScanRequest&) = default;
};

struct TakenScan {
  ScanRequest request;
  Evidence evidence;
};

// Belongs to one tick: whoever begins a tick begins with none.
using TakenScans = std::vector<TakenScan>;

// The complete evidence of an earlier scan of the tick; null when there is none. What a scan did
// not finish may be finished by the next.
[[nodiscard]] inline const Evidence* completeScan(const TakenScans& taken,
                                                  const ScanRequest& request) {
  for (const TakenScan& scan : taken) {
    if (scan.evidence.complete && scan.request == request) return &scan.evidence;
  }
  return nullptr;
}

}  // namespace callmonitor
