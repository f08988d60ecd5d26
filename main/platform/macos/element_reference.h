// What an element handle refers to on this platform.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include "platform/macos/owned.h"
#include "platform/platform.h"

namespace callmonitor::platform {

struct ElementReference {
  Owned<AXUIElementRef> element;
  // Seconds; handed on to every element that is read from this one.
  double messageTimeout = 0;
};

// A handle on an element. The system keeps the messaging time-out for one reference only, not for
// others to the same element nor for what is read from it, so each one that is wrapped is told.
[[nodiscard]] Element wrapped(Owned<AXUIElementRef> element, double messageTimeout);

}  // namespace callmonitor::platform
