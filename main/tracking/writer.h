// Writes records to standard output, one line each, flushed at once so that every record reaches
// its reader as soon as it is written. Two kinds are gated, so that an unchanged client does not
// fill the stream. A record that JSON cannot hold is dropped without a word.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "text/json.h"

namespace callmonitor {

// When a client was last written, and with which flags.
struct ClientEmission {
  double at = 0;  // uptime seconds
  bool mediaActive = false;
  bool lobby = false;
};

// What the gates remember.
struct WriterGates {
  std::map<std::string, ClientEmission> clientEmittedAt;  // by meeting key
  std::string lastClientScanState;                        // what the last client scan said
  double lastClientScanAt = -std::numeric_limits<double>::infinity();  // uptime seconds
};

// Writes any record.
void emit(const Record& record);

// Writes a client record, unless the same key was written less than 60 s ago with the same flags.
// Two clients that report one key share its gate.
void emitClient(WriterGates& gates, std::string_view provider, const std::string& key,
                std::int32_t pid, const std::optional<std::string>& bundleID, bool mediaActive,
                bool lobby);

// Writes a client-scan record, at most one a second and one that says nothing new at most every
// 30 s. The node counters and the time are nothing new.
void emitClientScan(WriterGates& gates, const Record& record);

}  // namespace callmonitor
