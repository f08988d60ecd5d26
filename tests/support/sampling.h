// Samples single applications of a scripted desktop, with calls that are tracked already.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/application_sampling.h"
#include "support/desktop_builder.h"

namespace callmonitor::support {

struct SamplingTest : testing::Test {
  Tracker tracker;
  ScanMemory memory;
  TakenScans scans;
  double deadline = 1001.2;

  SamplingTest() { scripted::reset(); }

  // Samples a running application, on a fresh record of calls.
  AppSample sample(std::int32_t pid) {
    const platform::Application application = platform::runningApplication(pid).value();
    desktop().calls.clear();
    return sampleApplication(application, {deadline, desktop().audio, tracker, memory, scans});
  }

  std::string identifierOf(const std::string& key) {
    return elementID(memory.registry, scripted::element(key));
  }

  // Tracks a call on these elements, as if an earlier cycle had opened it.
  Call& track(std::int32_t pid, const Conference& conference, const std::string& windowKey,
              const std::string& elementKey) {
    Call call;
    call.pid = pid;
    call.launchedAt = 1.0;
    call.conference = conference;
    call.window = remember(memory, scripted::element(windowKey));
    call.element = remember(memory, scripted::element(elementKey));
    return tracker.calls.insert_or_assign(conference.key, call).first->second;
  }
};

inline std::vector<Conference> conferencesOf(const AppSample& sample) {
  std::vector<Conference> conferences;
  for (const Surface& surface : sample.surfaces) conferences.push_back(surface.conference);
  return conferences;
}

}  // namespace callmonitor::support
