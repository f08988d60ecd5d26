// The walk takes the last of what it knows of; so what lies above an element that it took has been
// passed over.
#include "platform/linux/walk_mirror.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/platform.h"

namespace callmonitor::platform {

WalkMirror beginWalk(ObjectName root, int budget) {
  WalkMirror mirror;
  mirror.stack.push_back(std::move(root));
  mirror.left = budget;
  return mirror;
}

Followed follow(WalkMirror& mirror, const ObjectName& object, bool again) {
  if (mirror.taken == object && !again) return {Step::stays, {}};
  auto& stack = mirror.stack;
  const auto found = std::find(stack.rbegin(), stack.rend(), object);
  if (found == stack.rend() || mirror.left <= 0) {
    return {mirror.taken == object ? Step::stays : Step::strange, {}};
  }
  const auto place = std::prev(found.base());
  Followed followed{Step::takes, {std::next(place), stack.end()}};
  stack.erase(place, stack.end());
  followed.left = std::exchange(mirror.taken, object);
  mirror.beneath = stack.size();
  --mirror.left;
  return followed;
}

void descend(WalkMirror& mirror, const std::vector<ObjectName>& children) {
  if (!mirror.taken) return;
  mirror.stack.resize(std::min(mirror.beneath, mirror.stack.size()));
  const std::size_t kept = std::min(children.size(), walkChildCap);
  mirror.stack.insert(mirror.stack.end(), children.begin(),
                      children.begin() + static_cast<std::ptrdiff_t>(kept));
}

std::vector<ObjectName> upcoming(const WalkMirror& mirror, std::size_t most) {
  const auto allowed = static_cast<std::size_t>(std::max(mirror.left, 0));
  const std::size_t count = std::min({most, allowed, mirror.stack.size()});
  return {mirror.stack.rbegin(), mirror.stack.rbegin() + static_cast<std::ptrdiff_t>(count)};
}

}  // namespace callmonitor::platform
