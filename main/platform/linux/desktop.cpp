// It is made when it is first asked for.
#include "platform/linux/desktop.h"

namespace callmonitor::platform {

Desktop& desktop() {
  static Desktop instance;
  return instance;
}

}  // namespace callmonitor::platform
