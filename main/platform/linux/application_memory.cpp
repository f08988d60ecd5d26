#include "platform/linux/application_memory.h"

namespace callmonitor::platform {

bool isStranger(const CycleList& list, std::int32_t pid, const ProcessLook& look) {
  return list.stranger && list.stranger->pid == pid && look.stat &&
         look.stat->startTicks == list.stranger->startTicks;
}

}  // namespace callmonitor::platform
