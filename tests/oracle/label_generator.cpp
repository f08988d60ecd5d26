#include "oracle/label_generator.h"

#include <array>

#include "oracle/naive_text.h"

namespace callmonitor::oracle {
namespace {

using Texts = std::vector<std::string_view>;

const Texts muteTexts{"mute{| audio| my audio| your audio| microphone| my microphone}",
                      "mute{| your microphone| mic| my mic| your mic}",
                      "turn off {microphone|mic}"};
const Texts stopTexts{"stop {|my |your }video", "turn off {camera|video}"};
const Texts contraryTexts{"unmute{| audio| my audio| your microphone| mic}",
                          "turn on {microphone|mic|camera|video}",
                          "join audio",
                          "start {|my |your }video",
                          "join{| now| meeting| call}",
                          "ask to join"};
const Texts leaveTexts{"leave{| call| meeting}", "disconnect{| call| voice}", "hang up",
                       "end{| call| meeting}"};
const Texts lobbyTexts{"audio, turn {on|off}, currently {muted|unmuted}",
                       "video, turn {on|off}, currently off",
                       "{microphone|camera} settings",
                       "audio",
                       "video",
                       "start",
                       "{|please }always show this preview when joining{|.}"};
const Texts teamsTexts{"rejoin{| the call| the meeting}", "dismiss{| all}", "{send |}feedback",
                       "unmute this chat message"};
const Texts otherTexts{"play",
                       "raise hand",
                       "{more|device} options",
                       "rejoin",
                       "commute",
                       "leave {the|this} {call|meeting}",
                       "end {voice|the call}",
                       "mute {all|the audio|his audio}",
                       "stop {sharing|recording}",
                       "join {us|with audio|meeting now}",
                       "turn {off|on} {captions|audio|mic}"};

const Texts endTexts{"you {|have }left {|the }{meeting|call}",
                     "you{'|’}ve left {|the }{meeting|call}",
                     "{|the |this }{meeting|call} {|has }ended",
                     "{|the |this }meeting has been ended by {|the }host",
                     "{|the }host has ended {|the |this }meeting",
                     "your host {|has }ended the meeting for everyone",
                     "you{'ve|’ve| have} ended the meeting for everyone"};
const Texts nearlyEndTexts{"you {will|had|`ve|‘ve} left {|this }{meeting|call|chat}",
                           "we discussed why the call ended",
                           "{a|our} {meeting|call} has ended",
                           "the {meeting|call} {is ending|will be ended}",
                           "the {call|webinar} has been ended by {|your }host",
                           "{your|a} host has ended the {meeting|call}",
                           "the host ended the meeting for everyone",
                           "you ended the meeting for everyone"};
const Texts lostTexts{"{reconnecting|connecting|trying to reconnect}{|.|!|…|...}",
                      "{reconnecting|connecting|trying to connect}{..|....|?|……| …| to audio}"};
const Texts teamsNotices{"did you leave by mistake?", "did you leave by mistake{|!|? rejoin}",
                         "stay connected after your meeting chat with everyone or pick specific "
                         "people{||.}",
                         "how was the call quality{?|?||?!}"};
const Texts containerTexts{
    "{|meeting |(}{chat|messages|transcript|transcription|captions|conversation|quoted}"
    "{|| panel|2|)|'s|, closed}",
    "{|our|é}{chat|message|transcript|caption|quote}{s|ter|d|ing|é}"};
const Texts tileTexts{
    "{qa|ann|}{|,}{|,| ,} computer audio {muted|unmuted}{|, video on|, video off}",
    "qa, computer audio {muted|unmuted|mutedly}, {video|camera} {on|off|up}"};
const Texts shortcuts{" (⌘ + W)", "(ctrl+d)", "  (Alt+A) ", " ()",      " (a) (b)", " (a (b)",
                      " (a))",    " (open",   " shut)",     " (a) now", "(а́)"};
const Texts words{"the", "call", "meeting", "left",  "you",   "has",  "ended", "host", "mute",
                  "mic", "join", "video",   "turn",  "off",   "on",   "chat",  "end",  "(",
                  ")",   ".",    "!",       "…",     "...",   ",",    "'",     "’",    "audio",
                  "now", "ask",  "to",      "leave", "start", "stop", "your",  "my",   "camera",
                  "É",   "Ж",    "×",       "2",     "_",     "-",    "",      "hang", "up"};
const Texts gaps{" ",      "  ",     "\t",     "\n",     "\r\n",   "\v",     "\f",
                 "\u0085", "\u00a0", "\u1680", "\u2000", "\u2003", "\u200a", "\u2028",
                 "\u2029", "\u202f", "\u205f", "\u3000", " \t "};
// They look like white space or like a capital, and are neither.
const Texts lookalikes{"\u200b", "\ufeff", "\u180e", "\u2060", "\u001c", "\u00ad", "ß", "÷"};

std::string oneOf(Draw& draw, const Texts& templates) {
  return draw.expanded(draw.from(templates));
}

std::string wordSalad(Draw& draw) {
  std::string text;
  for (std::size_t left = draw.below(6); left > 0; --left) {
    text += std::string(draw.from(words)) + (draw.oneIn(4) ? "" : " ");
  }
  return text;
}

// One small change somewhere: what makes of a client's words a near miss.
void damage(Draw& draw, std::string& label) {
  std::vector<char32_t> text = characters(label);
  if (text.empty()) return;
  const auto place = text.begin() + static_cast<std::ptrdiff_t>(draw.below(text.size()));
  switch (draw.below(5)) {
    case 0:
      text.erase(place);
      break;
    case 1:
      text.insert(place, draw.from(std::u32string_view(U"abz2 .!()',?-")));
      break;
    case 2:
      text.insert(place, characters(draw.from(lookalikes)).front());
      break;
    case 3:
      *place = draw.from(std::u32string_view(U"aeimz .…’'"));
      break;
    default:
      text.insert(text.begin(), draw.from(std::u32string_view(U"a2 (.-")));
  }
  label = utf8(text);
}

// The same label as a careless client writes it: with capitals and odd white space, which no rule
// may notice.
std::string dressed(Draw& draw, const std::string& label) {
  const std::size_t capitals = draw.below(3);  // none, those of words, all
  const bool odd = draw.oneIn(4);
  std::vector<char32_t> text;
  bool wordStarts = true;
  for (const char32_t c : characters(label)) {
    if (c == U' ' && odd) {
      for (const char32_t gap : characters(draw.from(gaps))) text.push_back(gap);
    } else if (c >= U'a' && c <= U'z' && (capitals == 2 || (capitals == 1 && wordStarts))) {
      text.push_back(c - 32);
    } else {
      text.push_back(c);
    }
    wordStarts = c == U' ';
  }
  std::string result = utf8(text);
  if (odd && draw.oneIn(2)) result = std::string(draw.from(gaps)) + result;
  if (odd && draw.oneIn(2)) result += draw.from(gaps);
  return result;
}

// A client's words, one in four of them with a flaw, and dressed.
std::string label(Draw& draw, const Texts& templates) {
  std::string text = oneOf(draw, templates);
  if (draw.oneIn(4)) damage(draw, text);
  return dressed(draw, text);
}

std::string control(Draw& draw, const Texts& templates) {
  std::string text = oneOf(draw, templates);
  if (draw.oneIn(8)) damage(draw, text);
  if (draw.oneIn(4)) text += draw.from(shortcuts);
  return dressed(draw, text);
}

// Labels that belong together on one screen of a client, by the kind of the screen.
void addScreenOfAKind(Draw& draw, Screen& screen) {
  switch (draw.below(6)) {
    case 0:  // in the call
      screen.controls = {control(draw, leaveTexts), control(draw, muteTexts)};
      break;
    case 1:  // in the call, transmitting
      screen.controls = {control(draw, muteTexts), control(draw, stopTexts)};
      break;
    case 2:  // before the call
      for (const std::string_view text :
           {"{audio|audio, turn on, currently muted|microphone}", "{video|camera|play}",
            "{join|join now|ask to join|start|always show this preview when joining}"}) {
        screen.controls.push_back(dressed(draw, draw.expanded(text)));
      }
      if (draw.oneIn(3)) screen.controls.push_back(control(draw, lobbyTexts));
      break;
    case 3:  // after a call of Teams
      screen.notices.push_back(label(draw, teamsNotices));
      screen.controls = {control(draw, teamsTexts), control(draw, teamsTexts)};
      if (draw.oneIn(2)) screen.controls.emplace_back("Send feedback");
      break;
    case 4:
      screen.notices.push_back(label(draw, endTexts));
      break;
    default:
      screen.notices.push_back(label(draw, lostTexts));
  }
}

}  // namespace

std::string anyControl(Draw& draw) {
  static const std::array<const Texts*, 7> kinds{
      &muteTexts, &stopTexts, &contraryTexts, &leaveTexts, &lobbyTexts, &teamsTexts, &otherTexts};
  return control(draw, *draw.from(kinds));
}

std::string anyNotice(Draw& draw) {
  static const std::array<const Texts*, 4> kinds{&endTexts, &nearlyEndTexts, &lostTexts,
                                                 &teamsNotices};
  std::string text = oneOf(draw, *draw.from(kinds));
  if (draw.oneIn(2)) text += draw.expanded("{.|!|..|?|…}");
  if (draw.oneIn(6)) damage(draw, text);
  return dressed(draw, text);
}

std::string anyLabel(Draw& draw) {
  switch (draw.below(8)) {
    case 0:
      return label(draw, containerTexts);
    case 1:
      return label(draw, tileTexts);
    case 2:
      return dressed(draw, wordSalad(draw));
    case 3:
    case 4:
      return anyNotice(draw);
    default:
      return anyControl(draw);
  }
}

std::string anyProvider(Draw& draw) {
  static const Texts names{"zoom",  "zoom",  "meet",        "meet", "teams", "teams",
                           "webex", "webex", "application", "",     "Zoom"};
  return std::string(draw.from(names));
}

Screen anyScreen(Draw& draw) {
  Screen screen;
  screen.provider = anyProvider(draw);
  screen.tile = draw.oneIn(4);
  screen.complete = !draw.oneIn(8);
  if (!draw.oneIn(5)) addScreenOfAKind(draw, screen);
  if (draw.oneIn(6)) addScreenOfAKind(draw, screen);
  for (std::size_t more = draw.below(3); more > 0; --more) {
    screen.controls.push_back(draw.oneIn(3) ? anyControl(draw) : control(draw, otherTexts));
  }
  for (std::size_t more = draw.oneIn(2) ? draw.below(3) : 0; more > 0; --more) {
    screen.notices.push_back(anyNotice(draw));
  }
  return screen;
}

}  // namespace callmonitor::oracle
