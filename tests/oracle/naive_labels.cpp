#include "oracle/naive_labels.h"

#include <map>

#include "oracle/expression.h"
#include "oracle/naive_text.h"

namespace callmonitor::oracle {
namespace {

const Expression& expression(Rule rule) {
  static const std::map<Rule, const char*> texts{
      {Rule::chatContent,
       R"((^|[^a-z])(chat|messages|transcript|transcription|captions|conversation|quoted)([^a-z]|$))"},
      {Rule::reconnecting, R"(^(reconnecting|connecting|trying to reconnect)([.!…]|\.{3})?$)"},
      {Rule::zoomTile, R"(, computer audio (unmuted|muted)(, video (on|off))?$)"},
      {Rule::lobbyAudio, R"((microphone|mute|audio, turn (on|off)))"},
      {Rule::lobbyVideo, R"((camera|video))"},
      {Rule::joinControl, R"(^(join( now| meeting| call)?|ask to join)(\s*\([^)]*\))?$)"},
      {Rule::leaveControl,
       R"(^(leave( (call|meeting))?|disconnect( (call|voice))?|hang up|end( (call|meeting))?)(\s*\([^)]*\))?$)"},
      {Rule::leftNotice,
       R"(^(you (have )?left (the )?(meeting|call)|you['’]ve left (the )?(meeting|call)|(the |this )?(meeting|call) (has )?ended)[.!]?$)"},
      {Rule::hostEnded,
       R"(^((the |this )?meeting has been ended by (the )?host|(the )?host has ended (the |this )?meeting)[.!]?$)"},
      {Rule::endedForEveryone,
       R"(^(your host (has )?ended|you['’]ve ended|you have ended) the meeting for everyone[.!]?$)"},
      {Rule::shortcutSuffix, R"(\s*\([^)]*\)\s*$)"},
      {Rule::muteControl,
       R"(^(mute( (my |your )?(audio|microphone|mic))?|turn off (microphone|mic))$)"},
      {Rule::unmuteControl,
       R"(^(unmute( (my |your )?(audio|microphone|mic))?|turn on (microphone|mic)|join audio)$)"},
      {Rule::stopVideo, R"(^(stop (my |your )?video|turn off (camera|video))$)"},
      {Rule::startVideo, R"(^(start (my |your )?video|turn on (camera|video))$)"},
      {Rule::joinExact, R"(^(join( now| meeting| call)?|ask to join)$)"},
  };
  static std::map<Rule, Expression> compiled;
  const auto known = compiled.find(rule);
  if (known != compiled.end()) return known->second;
  return compiled.emplace(rule, overCharacters(texts.at(rule))).first->second;
}

bool whiteSpace(char32_t c) {
  if (c >= 0x09 && c <= 0x0D) return true;
  if (c >= 0x2000 && c <= 0x200A) return true;
  return c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 || c == 0x2028 || c == 0x2029 ||
         c == 0x202F || c == 0x205F || c == 0x3000;
}

char32_t lower(char32_t c) {
  if (c >= U'A' && c <= U'Z') return c + 32;
  if (c >= U'À' && c <= U'Þ' && c != U'×') return c + 32;
  if (c >= U'А' && c <= U'Я') return c + 32;
  return c;
}

Labels allNormalized(const Labels& labels) {
  Labels result;
  for (const std::string& label : labels) result.push_back(normalized(label));
  return result;
}

bool someFound(const Labels& texts, Rule rule) {
  for (const std::string& text : texts) {
    if (found(rule, text)) return true;
  }
  return false;
}

bool someEquals(const Labels& texts, const std::string& phrase) {
  for (const std::string& text : texts) {
    if (text == phrase) return true;
  }
  return false;
}

bool someContains(const Labels& texts, const std::string& phrase) {
  for (const std::string& text : texts) {
    if (text.find(phrase) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

std::string normalized(const std::string& label) {
  std::vector<std::vector<char32_t>> words(1);
  for (const char32_t c : characters(label)) {
    if (whiteSpace(c)) {
      words.emplace_back();
    } else {
      words.back().push_back(lower(c));
    }
  }
  std::string result;
  for (const std::vector<char32_t>& word : words) {
    if (word.empty()) continue;
    if (!result.empty()) result += " ";
    result += utf8(word);
  }
  return result;
}

bool found(Rule rule, const std::string& text) {
  return matchesSomewhere(text, expression(rule));
}

std::string withoutShortcut(const std::string& text) {
  return withoutMatch(text, expression(Rule::shortcutSuffix));
}

bool excludedContent(const std::string& role, const std::string& subrole,
                     const std::string& label) {
  if (role == "AXTextArea" || role == "AXTextField" || role == "AXList") return true;
  if (role == "AXTable" || role == "AXOutline" || role == "AXBlockQuote") return true;
  if (subrole == "AXApplicationLog" || subrole == "AXApplicationFeed") return true;
  return found(Rule::chatContent, normalized(label));
}

bool teamsPostCallNotice(const std::string& label) {
  const std::string text = normalized(label);
  if (text == "did you leave by mistake?") return true;
  return text == "stay connected after your meeting chat with everyone or pick specific people";
}

bool providerNoticeLeaf(const std::string& role, const std::string& subrole,
                        const std::string& title, const std::string& description) {
  if (role != "AXStaticText") return false;
  if (subrole == "AXApplicationLog" || subrole == "AXApplicationFeed") return false;
  if (teamsPostCallNotice(title)) return true;
  return teamsPostCallNotice(description);
}

std::string callState(const Labels& controls, const Labels& notices, const std::string& provider) {
  const Labels offered = allNormalized(controls);
  const Labels told = allNormalized(notices);
  const bool microphone = someContains(offered, "mute") || someContains(offered, "microphone");
  if (someFound(offered, Rule::leaveControl) && microphone) return "joined";
  if (someFound(told, Rule::reconnecting)) return "unknown";
  if (provider == "meet") {
    if (someFound(told, Rule::endedForEveryone)) return "left";
  }
  if (provider == "teams") {
    const bool asked =
        someEquals(told, "did you leave by mistake?") ||
        someEquals(told,
                   "stay connected after your meeting chat with everyone or pick specific people");
    if (asked && someEquals(offered, "rejoin the call")) return "left";
    const bool survey = someEquals(told, "how was the call quality?");
    if (survey && someEquals(offered, "dismiss") && someEquals(offered, "send feedback")) {
      return "left";
    }
  }
  for (const std::string& notice : told) {
    if (found(Rule::leftNotice, notice)) return "left";
    if (provider == "zoom" || provider == "meet" || provider == "teams") {
      if (found(Rule::hostEnded, notice)) return "left";
    }
  }
  return "unknown";
}

std::string evidenceState(const Screen& screen) {
  if (!screen.complete) return "unknown";
  std::string state = callState(screen.controls, screen.notices, screen.provider);
  if (state != "unknown") return state;
  if (someFound(allNormalized(screen.notices), Rule::reconnecting)) return "unknown";
  if (screen.provider == "zoom" && screen.tile) return "joined";
  return "unknown";
}

bool meetingLobby(const Labels& controls, const std::string& provider) {
  const Labels offered = allNormalized(controls);
  if (callState(controls, {}, provider) == "joined") return false;
  bool audio = someFound(offered, Rule::lobbyAudio);
  if (provider == "zoom" && someEquals(offered, "audio")) audio = true;
  const bool video = someFound(offered, Rule::lobbyVideo);
  const bool join = someFound(offered, Rule::joinControl);
  if (provider != "zoom") return audio && video && join;
  if (!someEquals(offered, "start")) return audio && video && join;
  const bool preview = someContains(offered, "always show this preview when joining");
  return audio && video && (join || preview);
}

bool mediaActive(const Labels& controls) {
  Labels offered;
  for (const std::string& text : allNormalized(controls)) offered.push_back(withoutShortcut(text));
  if (offered.empty()) return false;
  if (!someFound(offered, Rule::muteControl)) return false;
  if (!someFound(offered, Rule::stopVideo)) return false;
  if (someFound(offered, Rule::unmuteControl)) return false;
  if (someFound(offered, Rule::startVideo)) return false;
  return !someFound(offered, Rule::joinExact);
}

}  // namespace callmonitor::oracle
