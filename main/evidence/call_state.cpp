#include "evidence/call_state.h"

#include <algorithm>

#include "evidence/label_rules.h"

namespace callmonitor {
namespace {

using Labels = std::vector<std::string>;

Labels normalizedAll(const Labels& labels) {
  Labels result;
  result.reserve(labels.size());
  for (const std::string& label : labels) result.push_back(normalized(label));
  return result;
}

bool anyMatches(const Labels& labels, const Pattern& pattern) {
  return std::ranges::any_of(labels, [&](const std::string& l) { return matches(l, pattern); });
}

bool anyEquals(const Labels& labels, std::string_view phrase) {
  return std::ranges::count(labels, phrase) > 0;
}

bool anyContains(const Labels& labels, std::string_view phrase) {
  return std::ranges::any_of(
      labels, [&](const std::string& l) { return l.find(phrase) != std::string::npos; });
}

// A way out beside a microphone means presence, whatever notices stand next to it.
bool joinedControls(const Labels& controls) {
  return anyMatches(controls, leaveControlPattern) &&
         std::ranges::any_of(phrases::microphoneWords,
                             [&](std::string_view word) { return anyContains(controls, word); });
}

// The screens that Teams shows after a call: an offer to come back, or a survey.
bool teamsEnded(const Labels& controls, const Labels& notices) {
  const bool postCall = std::ranges::any_of(notices, teamsPostCallText);
  if (postCall && anyEquals(controls, phrases::teamsRejoin)) return true;
  return anyEquals(notices, phrases::teamsQualityQuestion) &&
         anyEquals(controls, phrases::teamsDismiss) &&
         anyEquals(controls, phrases::teamsSendFeedback);
}

bool endingNotice(const std::string& notice, std::string_view provider) {
  if (matches(notice, leftNoticePattern)) return true;
  const bool trusted = provider == "zoom" || provider == "meet" || provider == "teams";
  return trusted && matches(notice, hostEndedPattern);
}

}  // namespace

CallState callState(const Labels& controls, const Labels& notices, std::string_view provider) {
  const Labels plainControls = normalizedAll(controls);
  const Labels plainNotices = normalizedAll(notices);
  if (joinedControls(plainControls)) return CallState::joined;
  if (anyMatches(plainNotices, reconnectingPattern)) return CallState::unknown;
  if (provider == "meet" && anyMatches(plainNotices, endedForEveryonePattern)) {
    return CallState::left;
  }
  if (provider == "teams" && teamsEnded(plainControls, plainNotices)) return CallState::left;
  const bool ended = std::ranges::any_of(
      plainNotices, [&](const std::string& notice) { return endingNotice(notice, provider); });
  return ended ? CallState::left : CallState::unknown;
}

CallState Evidence::state(std::string_view provider) const {
  if (!complete) return CallState::unknown;
  const CallState shown = callState(controls, notices, provider);
  if (shown != CallState::unknown) return shown;
  // A tile stays on the screen while the connection is lost.
  if (anyMatches(normalizedAll(notices), reconnectingPattern)) return CallState::unknown;
  return provider == "zoom" && nativeZoomTile ? CallState::joined : CallState::unknown;
}

bool meetingLobby(const Labels& controls, std::string_view provider) {
  if (callState(controls, {}, provider) == CallState::joined) return false;
  const Labels plain = normalizedAll(controls);
  const bool zoom = provider == "zoom";
  const bool audio =
      anyMatches(plain, lobbyAudioPattern) || (zoom && anyEquals(plain, phrases::zoomAudio));
  const bool video = anyMatches(plain, lobbyVideoPattern);
  // The host's Zoom preview says "Start" instead of "Join"; only the preview's own option tells it
  // from the home screen.
  const bool preview = zoom && anyEquals(plain, phrases::zoomStart) &&
                       anyContains(plain, phrases::zoomPreviewOption);
  return audio && video && (anyMatches(plain, joinControlPattern) || preview);
}

bool mediaActive(const Labels& controls) {
  Labels offers;
  for (const std::string& control : controls) {
    offers.push_back(shortcutSuffixPattern.removedFrom(normalized(control)));
  }
  return anyMatches(offers, muteControlPattern) && anyMatches(offers, stopVideoPattern) &&
         !anyMatches(offers, unmuteControlPattern) && !anyMatches(offers, startVideoPattern) &&
         !anyMatches(offers, joinExactPattern);
}

}  // namespace callmonitor
