// Which texts a scan takes for notices.
#include <gtest/gtest.h>

#include "support/label_expectation.h"

namespace callmonitor {
namespace {

using test::button;
using test::described;
using test::expectLabels;
using test::heading;
using test::holding;
using test::part;
using test::Part;
using test::scanData;
using test::subrole;
using test::window;
using test::with;
using Labels = std::vector<std::string>;

const std::string connectedText =
    "Stay connected after your meeting Chat with everyone or pick specific people";
const std::string mistakeText = "Did you leave by mistake?";

TEST(LabelScanNotices, TakesTheTeamsPostCallSentencesFromTexts) {
  const Part sentence = described(part("AXStaticText"), connectedText);
  expectLabels({
      {"a description that holds the word chat", window({sentence}), {}, {}, {connectedText}},
      {"a title", window({part("AXStaticText", connectedText)}), {}, {}, {connectedText}},
      {"a value",
       window({with(part("AXStaticText"), "AXValue", connectedText)}),
       {},
       {},
       {connectedText}},
      {"the other sentence", window({part("AXStaticText", mistakeText)}), {}, {}, {mistakeText}},
      {"white space and capitals do not matter",
       window({part("AXStaticText", "  DID you leave  by mistake? ")}),
       {},
       {},
       {"  DID you leave  by mistake? "}},
      {"in a browser too",
       holding(part("AXWebArea"), {sentence}),
       test::browser,
       {},
       {connectedText}},
      {"a longer text is none",
       window({part("AXStaticText", mistakeText + " Rejoin")}),
       {},
       {},
       {}},
      {"in a log it is none", window({subrole(sentence, "AXApplicationLog")}), {}, {}, {}},
      {"in a feed it is none", window({subrole(sentence, "AXApplicationFeed")}), {}, {}, {}},
      {"below an excluded group it is never reached",
       window({holding(part("AXGroup", "Chat"), {sentence})}),
       {},
       {},
       {}},
      {"a group that says it is none", window({part("AXGroup", mistakeText)}), {}, {}, {}},
      {"a button that says it is a control only",
       window({button(mistakeText)}),
       {},
       {mistakeText, ""},
       {}},
      {"a hidden one is none", window({with(sentence, "AXHidden", true)}), {}, {}, {}},
  });
}

TEST(LabelScanNotices, TakesALostConnectionFromAnyElement) {
  expectLabels({
      {"a text", window({part("AXStaticText", "Reconnecting...")}), {}, {}, {"Reconnecting..."}},
      {"a group", window({part("AXGroup", "Connecting…")}), {}, {}, {"Connecting…"}},
      {"a value",
       window({with(part("AXStaticText"), "AXValue", "Trying to reconnect")}),
       {},
       {},
       {"Trying to reconnect"}},
      {"a description",
       window({described(part("AXImage"), "reconnecting!")}),
       {},
       {},
       {"reconnecting!"}},
      {"a button is a control as well",
       window({button("Reconnecting")}),
       {},
       {"Reconnecting", ""},
       {"Reconnecting"}},
      {"a longer text is none",
       window({part("AXStaticText", "Reconnecting to audio")}),
       {},
       {},
       {}},
  });
}

TEST(LabelScanNotices, TakesEveryTextOfANoticeContainer) {
  const std::string ended = "You left the meeting";
  const Part text = part("AXStaticText", ended);
  const Part group = part("AXGroup");
  const Part alert = subrole(group, "AXApplicationAlert");
  const Part dialog = subrole(group, "AXDialog");
  expectLabels({
      {"a heading", window({heading(ended)}), {}, {}, {ended}},
      {"a heading in a browser",
       holding(part("AXWebArea"), {heading(ended)}),
       test::browser,
       {},
       {ended}},
      {"a text elsewhere is none", window({text}), {}, {}, {}},
      {"a text below a heading", window({holding(heading(""), {text})}), {}, {}, {ended}},
      {"a text far below a heading",
       window({holding(heading(""), {holding(group, {holding(group, {text})})})}),
       {},
       {},
       {ended}},
      {"a text below an alert", window({holding(alert, {text})}), {}, {}, {ended}},
      {"a text below an alert in a browser",
       holding(part("AXWebArea"), {holding(alert, {text})}),
       test::browser,
       {},
       {ended}},
      {"a text below a dialog of a native client",
       window({holding(dialog, {text})}),
       {},
       {},
       {ended}},
      {"a dialog's own title",
       window({subrole(part("AXWindow", ended), "AXDialog")}),
       {},
       {},
       {ended}},
      {"a dialog of a browser proves nothing",
       holding(part("AXWebArea"), {holding(dialog, {text})}),
       test::browser,
       {},
       {}},
      {"a heading within a browser's dialog still counts",
       holding(part("AXWebArea"), {holding(dialog, {heading(ended)})}),
       test::browser,
       {},
       {ended}},
      {"a container says nothing about its siblings",
       window({text, heading("x"), text}),
       {},
       {},
       {"x"}},
      {"nor about its parent", holding(part("AXGroup", ended), {heading("x")}), {}, {}, {"x"}},
      {"value, title and description in this order",
       window({with(described(heading("title"), "description"), "AXValue", "value")}),
       {},
       {},
       {"value", "title", "description"}},
      {"empty texts are none", window({described(heading(""), "d")}), {}, {}, {"d"}},
      {"a button below a heading is control and notice",
       window({holding(heading(""), {button("Rejoin")})}),
       {},
       {"Rejoin", ""},
       {"Rejoin"}},
      {"a disabled button there is a notice only",
       window({holding(heading(""), {with(button("Rejoin"), "AXEnabled", false)})}),
       {},
       {},
       {"Rejoin"}},
      {"a standard window is no container",
       window({subrole(holding(group, {text}), "AXStandardWindow")}),
       {},
       {},
       {}},
      {"a role of that name is no dialog", window({holding(part("AXDialog"), {text})}), {}, {}, {}},
  });
}

struct NoticeLengthCase {
  std::string_view sentence;
  std::string character;
};

TEST(LabelScanNotices, IgnoresTextsOf200CharactersOrMore) {
  const NoticeLengthCase cases[] = {
      {"letters", "a"},
      {"letters of two bytes", "é"},
      {"letters with combining marks", "e\xCC\x81"},
      {"emoji", "😀"},
      {"families joined by zero-width joiners", "👨‍👩‍👧‍👦"},
      {"flags", "🇩🇪"},
  };
  for (const NoticeLengthCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    std::string text;
    for (int i = 0; i < 199; ++i) text += row.character;
    EXPECT_EQ(scanData(heading(text)).notices, Labels{text}) << "199 characters";
    text += row.character;
    EXPECT_TRUE(scanData(heading(text)).notices.empty()) << "200 characters";
    EXPECT_EQ(scanData(button(text)).controls, (Labels{text, ""})) << "controls have no limit";
  }
}

TEST(LabelScanNotices, MeasuresEachOfTheThreeTextsByItself) {
  const std::string prose(200, 'a');
  const Part page = with(described(heading(prose), "d"), "AXValue", prose);
  EXPECT_EQ(scanData(page).notices, Labels{"d"});
}

}  // namespace
}  // namespace callmonitor
