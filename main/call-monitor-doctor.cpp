// Tells as text what the monitor can see of this desktop, so that a report can begin with facts.
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "doctor/command_line.h"
#include "doctor/examination.h"
#include "doctor/report_text.h"
#include "platform/platform.h"

namespace {

namespace doctor = callmonitor::doctor;

// Exit statuses, as sysexits.h has them.
constexpr int wrongUsage = 64;
constexpr int notWritten = 74;

// A desktop's connections keep the run loop going, and nothing of them has to be put in order.
[[noreturn]] void tell(const doctor::Findings& findings, doctor::Titles titles) {
  std::cout << doctor::reportText(findings, titles) << std::flush;
  std::_Exit(std::cout ? EXIT_SUCCESS : notWritten);
}

}  // namespace

int main(int argc, char** argv) {
  const std::optional<doctor::Request> request =
      doctor::requestIn(std::vector<std::string>(argv + 1, argv + argc));
  if (!request) {
    std::cerr << doctor::usage;
    return wrongUsage;
  }
  if (request->help) {
    std::cout << doctor::usage;
    return EXIT_SUCCESS;
  }
  const doctor::Titles titles = request->titles ? doctor::Titles::shown : doctor::Titles::lengths;
  doctor::visit([titles](const doctor::Findings& findings) { tell(findings, titles); });
  callmonitor::platform::runLoop();
  std::cerr << "call-monitor-doctor: the run loop ended before there was anything to tell\n";
  return EXIT_FAILURE;
}
