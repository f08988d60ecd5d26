// The three answers that a client's labels give: in the call or out of it, in the lobby, and
// whether the user is transmitting. Pure functions of labels as the scan collected them.
//
// The rules differ between providers because each client words its screens differently. Those
// differences are required; evening them out makes one client's words end another client's call.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "evidence/evidence.h"

namespace callmonitor {

// The call state that controls and notices show, in the provider's client ("zoom", "meet" and
// "teams" have rules of their own).
[[nodiscard]] CallState callState(const std::vector<std::string>& controls,
                                  const std::vector<std::string>& notices,
                                  std::string_view provider);

// Whether the controls show a pre-join screen. Does not look at whether the scan was complete.
[[nodiscard]] bool meetingLobby(const std::vector<std::string>& controls,
                                std::string_view provider);

// Whether microphone and camera are both live, judged from what the toggles offer. Any control that
// offers to unmute, to start video or to join speaks against it.
[[nodiscard]] bool mediaActive(const std::vector<std::string>& controls);

}  // namespace callmonitor
