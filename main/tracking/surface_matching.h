// Which surface of a sample is a tracked call's, and whether a call without one is gone. Pure
// functions of one call and one sample.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tracking/call_records.h"

namespace callmonitor {

// The position of the call's surface among the sample's surfaces, leaving out those that `claimed`
// marks (same length as the surfaces). Absent when there is none, or when several are equally good:
// between two views of one meeting there is no guessing.
[[nodiscard]] std::optional<std::size_t> surfaceOf(const Call& call, const AppSample& sample,
                                                   const std::vector<bool>& claimed);

// Whether the call's absence from this sample counts towards its end. Only calls without a surface
// are asked about; the sample's windows have been read.
[[nodiscard]] bool absenceCounts(const Call& call, const AppSample& sample);

}  // namespace callmonitor
