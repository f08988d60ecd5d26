// The label rules a second time, as plainly as they can be written, with another regular-expression
// engine. Nothing here may use the program's own rules: where the two disagree, one of them is
// wrong.
#pragma once

#include <string>
#include <vector>

namespace callmonitor::oracle {

using Labels = std::vector<std::string>;

enum class Rule {
  chatContent,
  reconnecting,
  zoomTile,
  lobbyAudio,
  lobbyVideo,
  joinControl,
  leaveControl,
  leftNotice,
  hostEnded,
  endedForEveryone,
  shortcutSuffix,
  muteControl,
  unmuteControl,
  stopVideo,
  startVideo,
  joinExact,
  count
};

// The label in small letters with single spaces. Knows the capitals of ASCII, Latin-1 and basic
// Cyrillic, and no others; the label is well-formed UTF-8.
[[nodiscard]] std::string normalized(const std::string& label);

// Whether the rule's pattern is found in a normalised text.
[[nodiscard]] bool found(Rule rule, const std::string& text);

// A normalised text without the shortcut in parentheses at its end.
[[nodiscard]] std::string withoutShortcut(const std::string& text);

[[nodiscard]] bool excludedContent(const std::string& role, const std::string& subrole,
                                   const std::string& label);
[[nodiscard]] bool teamsPostCallNotice(const std::string& label);
[[nodiscard]] bool providerNoticeLeaf(const std::string& role, const std::string& subrole,
                                      const std::string& title, const std::string& description);

// What a scan of a client's window saw.
struct Screen {
  std::string provider;
  Labels controls;
  Labels notices;
  bool tile = false;
  bool complete = true;
};

// The state's word, of the labels alone and of the whole scan.
[[nodiscard]] std::string callState(const Labels& controls, const Labels& notices,
                                    const std::string& provider);
[[nodiscard]] std::string evidenceState(const Screen& screen);

[[nodiscard]] bool meetingLobby(const Labels& controls, const std::string& provider);
[[nodiscard]] bool mediaActive(const Labels& controls);

}  // namespace callmonitor::oracle
