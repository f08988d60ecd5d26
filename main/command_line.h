// The argument list picks the mode: each flag is one exact argument, and their fixed order decides
// between several, not the order of the arguments. What matches nothing is ignored.
#pragma once

#include <string>
#include <vector>

namespace callmonitor {

enum class Mode {
  genericExitFixture,
  nativeIdentityFixture,
  clientFixture,
  providerRootFixture,
  zoomAudioHelpFixture,
  clientScanFixture,
  identity,
  mediaGateFixture,
  callEndingFixture,
  selfTest,
  monitoring,
};

struct CommandLine {
  Mode mode = Mode::monitoring;
  // What follows the first occurrence of the mode's flag, whatever it is; one at least for the
  // modes that take a value, which are not chosen without.
  std::vector<std::string> values;
};

// `arguments` is the whole list, the program's path included.
[[nodiscard]] CommandLine commandLine(const std::vector<std::string>& arguments);

}  // namespace callmonitor
