// The records of the output stream. Key names, types and units are the program's external
// interface; every record carries "version" 1 and "observedAt" in milliseconds since 1970.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "evidence/evidence.h"
#include "text/json.h"
#include "tracking/call_records.h"

namespace callmonitor {

// The record of an observation. `applicationBundleID` stands in where the call has no bundle
// identifier of its own. "screenWindowId" is present for a joined call with a title only when the
// call's very process shows exactly one normal on-screen window of exactly that title: an ambiguous
// title gives no number rather than a guess. Reads the running applications and the window list,
// whose failure only omits that key.
[[nodiscard]] Record serializedObservation(const Observation& observation,
                                           const std::optional<std::string>& applicationBundleID);

// The record of an active meeting client. A bundle identifier that is absent, empty, or of 256 or
// more characters is left out.
[[nodiscard]] Record serializedClient(std::string_view provider, std::string_view key,
                                      std::int32_t pid, const std::optional<std::string>& bundleID,
                                      bool mediaActive, bool lobby);

// The record of how far a look at the client in front came. Without a provider it holds the stage
// alone, without evidence the provider besides. Lists that the evidence does not have are null.
[[nodiscard]] Record serializedClientScan(std::string_view stage,
                                          const std::optional<std::string>& provider,
                                          const std::optional<Evidence>& evidence);

// The record that ends every cycle: whether accessibility trees may be read.
[[nodiscard]] Record serializedHealth(bool trusted);

}  // namespace callmonitor
