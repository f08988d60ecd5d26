// Runs whole cycles over a scripted desktop and reads what they wrote.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/report_cycle.h"
#include "process_state.h"
#include "support/desktop_builder.h"
#include "support/emitted_records.h"

namespace callmonitor::support {

struct CycleTest : testing::Test {
  ProcessState state;
  double interval = 0;  // what the last cycle asked for

  CycleTest() { scripted::reset(); }

  // One cycle, on a fresh record of calls; afterwards the clock moves on by a second.
  std::vector<Json> cycle() {
    desktop().calls.clear();
    std::vector<Json> records = recordsWrittenBy([&] { interval = report(state.cycleState()); });
    desktop().uptime += 1;
    return records;
  }

  // What one cycle told of calls, each as state and sequence: "joined 1".
  std::vector<std::string> told() {
    std::vector<std::string> words;
    for (const Json& record : ofKind(cycle(), "observation")) {
      words.push_back(record["state"].get<std::string>() + " " + record["sequence"].dump());
    }
    return words;
  }

  // The processes whose trees one cycle opened for their sample, in order.
  std::vector<std::string> opened() {
    (void)cycle();
    return openedForSamples();
  }

  // The same of the last cycle. Who is in front is asked before the samples and again after them.
  static std::vector<std::string> openedForSamples() {
    std::vector<std::string> processes;
    int askedForFront = 0;
    for (const std::string& call : desktop().calls) {
      if (call == "frontmost") ++askedForFront;
      if (askedForFront == 1 && call.starts_with("open ")) processes.push_back(call.substr(5));
    }
    return processes;
  }

  // The one call that is tracked.
  Call& call() {
    EXPECT_EQ(state.tracker.calls.size(), 1U);
    return state.tracker.calls.begin()->second;
  }
};

using Words = std::vector<std::string>;

}  // namespace callmonitor::support
