#include "tracking/writer.h"

#include <cstdio>

#include "platform/platform.h"
#include "tracking/records.h"

namespace callmonitor {
namespace {

// Uptime seconds.
constexpr double clientRepeatInterval = 60.0;
constexpr double clientMemory = 600.0;
constexpr double clientScanGap = 1.0;
constexpr double clientScanRepeatInterval = 30.0;

// The client memory is swept only when it has grown to this many keys.
constexpr std::size_t clientMemoryLimit = 257;

}  // namespace

void emit(const Record& record) {
  std::optional<std::string> line = serialized(record);
  if (!line) return;
  *line += '\n';
  std::fwrite(line->data(), 1, line->size(), stdout);
  std::fflush(stdout);
}

void emitClient(WriterGates& gates, std::string_view provider, const std::string& key,
                std::int32_t pid, const std::optional<std::string>& bundleID, bool mediaActive,
                bool lobby) {
  const double now = platform::systemUptime();
  auto& emitted = gates.clientEmittedAt;
  if (const auto last = emitted.find(key); last != emitted.end()) {
    const ClientEmission& previous = last->second;
    if (now - previous.at < clientRepeatInterval && previous.mediaActive == mediaActive &&
        previous.lobby == lobby) {
      return;
    }
  }
  emitted[key] = {now, mediaActive, lobby};
  if (emitted.size() >= clientMemoryLimit) {
    std::erase_if(emitted,
                  [&](const auto& entry) { return now - entry.second.at >= clientMemory; });
  }
  emit(serializedClient(provider, key, pid, bundleID, mediaActive, lobby));
}

void emitClientScan(WriterGates& gates, const Record& record) {
  Record told = record;
  for (const char* untold : {"observedAt", "nodes", "failedNodes"}) told.erase(untold);
  const std::optional<std::string> signature = serialized(told);
  if (!signature) return;
  const double now = platform::systemUptime();
  const double elapsed = now - gates.lastClientScanAt;
  if (elapsed < clientScanGap) return;
  if (*signature == gates.lastClientScanState && elapsed < clientScanRepeatInterval) return;
  gates.lastClientScanState = *signature;
  gates.lastClientScanAt = now;
  emit(record);
}

}  // namespace callmonitor
