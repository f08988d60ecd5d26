// The mirror says what comes next, the pipeline carries it; reads find the replies by themselves.
#include "platform/linux/scan_ahead.h"

#include <cstddef>
#include <utility>

#include "platform/linux/desktop.h"
#include "platform/linux/element_handle.h"
#include "platform/linux/peer_connections.h"
#include "platform/linux/scan_memory.h"

namespace callmonitor::platform {
namespace {

// Elements fetched ahead: enough that the application always has work while one reply is taken
// apart, and few enough that little is asked in vain when a walk stops.
constexpr std::size_t elementsAhead = 16;
// More are fetched when no more than these are left: looking at each step would cost more than it
// gains.
constexpr std::size_t elementsLow = 8;

void fetchAhead(Desktop& here) {
  const ScanAhead& scan = here.scan;
  Pipeline& pipeline = here.bus.pipeline;
  if (!leadsTo(pipeline, scan.mirror.taken->bus)) return;
  for (const ObjectName& next : upcoming(scan.mirror, elementsAhead)) {
    // An element may stand for one of another application, which has a connection of its own.
    if (!leadsTo(pipeline, next.bus)) continue;
    for (const Question question : scan.asked) {
      if (!hasRoom(pipeline, scan.limit)) return;
      if (!putAhead(here.bus, next, question)) return;
    }
  }
}

}  // namespace

void beginScan(Desktop& here, const ElementReference& root, double deadline, int budget) {
  endScan(here);
  const std::string& application = root.object.bus;
  const bool reachable = !application.empty() && here.bus.connection &&
                         root.generation == here.bus.generation &&
                         !here.bus.silent.contains(application);
  const double now = systemUptime();
  if (!here.element.active || !reachable || budget <= 0 || now >= deadline) return;
  const double patience = now + static_cast<double>(root.limit) / 1e6;
  const ObjectName top{application, "/org/a11y/atspi/accessible/root"};
  sd_bus* peer = peerConnection(here.peers, here.bus, {top, root.limit, patience});
  // Asking for the connection may have shown that the bus itself has gone.
  if (!here.bus.connection) return;
  openPipeline(here.bus.pipeline, peer != nullptr ? peer : here.bus.connection.get(),
               peer != nullptr ? FarEnd::peer : FarEnd::bus, application);
  here.scan.active = true;
  here.scan.generation = root.generation;
  here.scan.deadline = deadline;
  here.scan.limit = root.limit;
  here.scan.mirror = beginWalk(root.object, budget);
}

void endScan(Desktop& here) {
  closePipeline(here.bus.pipeline);
  here.scan = {};
}

void followScan(Desktop& here, const ElementReference& element, std::span<const Question> questions,
                bool again) {
  ScanAhead& scan = here.scan;
  if (!scan.active) return;
  Followed followed;
  if (element.generation == scan.generation && systemUptime() < scan.deadline) {
    followed = follow(scan.mirror, element.object, again);
  }
  if (followed.step == Step::strange) {
    endScan(here);
    return;
  }
  if (again) dropAllUnderway(here.bus.pipeline);
  const std::size_t known = scan.asked.size();
  scan.asked.insert(questions.begin(), questions.end());
  if (followed.step == Step::takes) {
    if (followed.left) dropUnderway(here.bus.pipeline, *followed.left);
    for (const ObjectName& each : followed.skipped) dropUnderway(here.bus.pipeline, each);
    if (here.bus.pipeline.underway.size() <= elementsLow) fetchAhead(here);
  } else if (scan.asked.size() > known) {
    fetchAhead(here);
  }
}

void descendScan(Desktop& here, const ElementReference& element,
                 const std::vector<ObjectName>& children) {
  ScanAhead& scan = here.scan;
  if (!scan.active || scan.mirror.taken != element.object) return;
  descend(scan.mirror, children);
  fetchAhead(here);
}

void alsoAsk(Desktop& here, Question question) {
  if (here.scan.active) here.scan.asked.insert(question);
}

}  // namespace callmonitor::platform
