// Trust, preparation and the cycle: what concerns the desktop as a whole.
#include "platform/linux/desktop.h"
#include "platform/linux/element_handle.h"
#include "platform/linux/peer_connections.h"
#include "platform/linux/scan_ahead.h"
#include "platform/linux/x11_connection.h"
#include "platform/platform.h"
#include "platform/posix/standard_output.h"

namespace callmonitor::platform {

void prepareMonitoring() {
  // Looked at by every connection, so that the first one switches on already.
  desktop().bus.mayEnable = true;
  prepareLooking();
}

void prepareLooking() {
  prepareStandardOutput();
  ensureConnected(desktop().bus);
  beginHearing(desktop().audio);
}

void inCycle(const std::function<void()>& cycle) {
  Desktop& here = desktop();
  const auto forget = [&here](bool remember) {
    here.bus.silent.clear();
    here.bus.rememberSilent = remember;
    here.x11->silent = false;
    here.x11->rememberSilent = remember;
    here.applications.keepList = remember;
    here.applications.list.reset();
    here.frames.passing.clear();
    endScan(here);
    here.element = {};
    here.element.active = remember;
  };
  discardUnasked(here.bus);
  refreshPeers(here.peers);
  forget(true);
  cycle();
  forget(false);
}

bool accessibilityTrusted() {
  AccessibilityBus& bus = desktop().bus;
  keepEnabled(bus);
  // A bus that went away may have come back under another address.
  return (ensureConnected(bus) && busAnswers(bus)) || (ensureConnected(bus) && busAnswers(bus));
}

void expectScan(const Element& root, double deadline, int budget) {
  if (root.reference) beginScan(desktop(), *root.reference, deadline, budget);
}

void expectSearch(const Element& root, double deadline, int budget) {
  expectScan(root, deadline, budget);
}

}  // namespace callmonitor::platform
