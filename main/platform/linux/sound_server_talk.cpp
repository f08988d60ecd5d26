#include "platform/linux/sound_server_talk.h"

#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// Seconds that a server may take to answer. It answers within milliseconds, and it is asked once a
// cycle, that is about once a second.
constexpr double answerLimit = 0.5;
// Steps in one go; far more than the messages of one cycle take.
constexpr int mostSteps = 256;

}  // namespace

void noteQuestion(ServerPatience& patience) {
  patience.askedAt = systemUptime();
}

void noteAnswer(ServerPatience& patience) {
  patience = {};
}

void noteTime(ServerPatience& patience) {
  if (patience.askedAt && systemUptime() - *patience.askedAt > answerLimit) patience.silent = true;
}

bool stepLoop(bool& stepping, const std::function<bool()>& stepOnce) {
  if (stepping) return false;
  stepping = true;
  for (int i = 0; i < mostSteps && stepOnce(); ++i) {
  }
  stepping = false;
  return true;
}

}  // namespace callmonitor::platform
