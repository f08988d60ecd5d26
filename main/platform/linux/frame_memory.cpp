// Each rule looks at one side of the pairs only.
#include "platform/linux/frame_memory.h"

#include <algorithm>

namespace callmonitor::platform {
namespace {

template <class Gone>
void forgetWhere(FrameMemory& memory, const Gone& gone) {
  std::erase_if(memory.certain, gone);
  std::erase_if(memory.passing, gone);
}

}  // namespace

void forgetUnregistered(FrameMemory& memory, const std::set<std::string>& registered) {
  forgetWhere(memory, [&](const auto& pair) { return !registered.contains(pair.first.bus); });
}

void forgetClosedWindows(FrameMemory& memory, const std::vector<ClientWindow>& listed) {
  forgetWhere(memory, [&](const auto& pair) {
    return std::none_of(listed.begin(), listed.end(),
                        [&](const ClientWindow& each) { return each.id == pair.second; });
  });
}

void forgetClosedFrames(FrameMemory& memory, const std::string& busName,
                        const std::vector<ObjectName>& children) {
  forgetWhere(memory, [&](const auto& pair) {
    return pair.first.bus == busName &&
           std::find(children.begin(), children.end(), pair.first) == children.end();
  });
}

bool paired(const FrameMemory& memory, std::uint32_t window) {
  return std::any_of(memory.certain.begin(), memory.certain.end(),
                     [&](const auto& pair) { return pair.second == window; });
}

std::optional<std::uint32_t> windowOf(const FrameMemory& memory, const ObjectName& frame) {
  for (const FramePairs* pairs : {&memory.certain, &memory.passing}) {
    if (const auto found = pairs->find(frame); found != pairs->end()) return found->second;
  }
  return std::nullopt;
}

}  // namespace callmonitor::platform
