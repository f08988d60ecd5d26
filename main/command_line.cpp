#include "command_line.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace callmonitor {
namespace {

struct Flag {
  std::string_view text;
  Mode mode;
  bool takesValue;
};

// The first that matches decides.
constexpr std::array<Flag, 10> flags{{
    {"--generic-exit-fixture", Mode::genericExitFixture, false},
    {"--native-identity-fixture", Mode::nativeIdentityFixture, false},
    {"--client-fixture", Mode::clientFixture, false},
    {"--provider-root-fixture", Mode::providerRootFixture, false},
    {"--zoom-audio-help-fixture", Mode::zoomAudioHelpFixture, false},
    {"--client-scan-fixture", Mode::clientScanFixture, false},
    {"--identity", Mode::identity, true},
    {"--media-gate-fixture", Mode::mediaGateFixture, false},
    {"--call-ending-fixture", Mode::callEndingFixture, true},
    {"--self-test", Mode::selfTest, false},
}};

}  // namespace

CommandLine commandLine(const std::vector<std::string>& arguments) {
  for (const Flag& flag : flags) {
    const auto found = std::ranges::find(arguments, flag.text);
    if (found == arguments.end()) continue;
    CommandLine chosen{flag.mode, {found + 1, arguments.end()}};
    if (!flag.takesValue || !chosen.values.empty()) return chosen;
  }
  return {};
}

}  // namespace callmonitor
