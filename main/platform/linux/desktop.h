// Everything that this platform remembers, in one record: the seam's functions have no handle to
// carry it in.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/linux/accessibility_bus.h"
#include "platform/linux/application_memory.h"
#include "platform/linux/audio_hearing.h"
#include "platform/linux/element_memory.h"
#include "platform/linux/frame_memory.h"
#include "platform/linux/peer_connections.h"
#include "platform/linux/scan_memory.h"
#include "platform/linux/x11.h"

namespace callmonitor::platform {

struct Desktop {
  AccessibilityBus bus;
  std::shared_ptr<X11Connection> x11 = makeX11Connection();
  ApplicationMemory applications;
  FrameMemory frames;
  PeerConnections peers;
  ElementMemory element;
  ScanAhead scan;
  AudioHearing audio;
};

// The process's one desktop.
[[nodiscard]] Desktop& desktop();

}  // namespace callmonitor::platform
