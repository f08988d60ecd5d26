// Normalisation and the predicates over labels.
#include "evidence/label_rules.h"

#include <gtest/gtest.h>

namespace callmonitor {
namespace {

struct NormalCase {
  std::string_view sentence;
  std::string_view label;
  std::string_view plain;
};

TEST(LabelRules, NormaliseCaseAndWhiteSpaceAndNothingElse) {
  const NormalCase cases[] = {
      {"a label with a shortcut", "  Leave   Call (⌘ + W) ", "leave call (⌘ + w)"},
      {"line breaks and tabs", "Leave\r\n\tcall", "leave call"},
      {"no-break spaces",
       "Leave\xC2\xA0\xE2\x80\xAF"
       "call\xE3\x80\x80",
       "leave call"},
      {"line and paragraph separators",
       "a\xE2\x80\xA8\xE2\x80\xA9"
       "b",
       "a b"},
      {"a straight apostrophe stays", "You've LEFT", "you've left"},
      {"a typographic apostrophe stays", "You’ve LEFT", "you’ve left"},
      {"punctuation stays", "Reconnecting…!.", "reconnecting…!."},
      {"full lower-casing", "İ ΟΔΟΣ", "i\xCC\x87 οδος"},
      {"an empty label", "", ""},
      {"a label of white space", " \t\xC2\xA0\n", ""},
  };
  for (const NormalCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(normalized(row.label), row.plain);
  }
}

struct SearchCase {
  std::string_view sentence;
  std::string_view text;
  bool found;
};

TEST(LabelRules, MatchingSearchesWithoutFolding) {
  const Pattern video("(camera|video)");
  const SearchCase cases[] = {
      {"anywhere", "turn off video, button", true},
      {"case is not folded", "VIDEO", false},
      {"marks are not folded", "vidéo", false},
      {"an empty text", "", false},
  };
  for (const SearchCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(matches(row.text, video), row.found);
  }
}

struct ExclusionCase {
  std::string_view sentence;
  std::string_view role;
  std::string_view subrole;
  std::string_view label;
  bool excluded;
};

TEST(LabelRules, ExcludeContainersOfOtherPeoplesWords) {
  const ExclusionCase cases[] = {
      {"a text area", "AXTextArea", "", "", true},
      {"a text area whatever its label", "AXTextArea", "", "Leave", true},
      {"a text field", "AXTextField", "", "", true},
      {"a list", "AXList", "", "", true},
      {"a table", "AXTable", "", "", true},
      {"an outline", "AXOutline", "", "", true},
      {"a quote", "AXBlockQuote", "", "", true},
      {"a log", "AXGroup", "AXApplicationLog", "", true},
      {"a log whatever its label", "AXButton", "AXApplicationLog", "Leave", true},
      {"a feed", "AXGroup", "AXApplicationFeed", "", true},
      {"a chat", "AXGroup", "", "Chat | Meeting with QA | Microsoft Teams", true},
      {"messages", "AXGroup", "", "In-call messages", true},
      {"a transcript", "AXGroup", "", " Live  TRANSCRIPT ", true},
      {"a button that names a chat", "AXButton", "", "Chat with everyone", true},
      {"a button", "AXButton", "", "Leave", false},
      {"a group", "AXGroup", "", "", false},
      {"an alert", "AXGroup", "AXApplicationAlert", "", false},
      {"roles are case-sensitive", "AXtextarea", "", "", false},
      {"roles are compared as a whole", "AXListItem", "", "", false},
      {"another text role", "AXStaticText", "", "", false},
      {"another table role", "AXRow", "", "", false},
      {"subroles are case-sensitive", "AXGroup", "AXapplicationlog", "", false},
      {"subroles are compared as a whole", "AXGroup", "AXApplicationLogEntry", "", false},
      {"a role in the place of a subrole", "AXGroup", "AXList", "", false},
      {"a subrole in the place of a role", "AXApplicationLog", "", "", false},
      {"a word that merely begins so", "AXGroup", "", "Chatter", false},
  };
  for (const ExclusionCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(excludedContent(row.role, row.subrole, row.label), row.excluded);
  }
}

struct NoticeCase {
  std::string_view sentence;
  std::string_view label;
  bool notice;
};

TEST(LabelRules, KnowTheTeamsPostCallSentencesByEquality) {
  const NoticeCase cases[] = {
      {"white space around", "  Did you leave by mistake?  ", true},
      {"capitals", "DID YOU LEAVE BY MISTAKE?", true},
      {"white space inside", "Did you\tleave  by\nmistake?", true},
      {"the other sentence",
       "Stay connected after your meeting Chat with everyone or pick specific people", true},
      {"a word behind", "Did you leave by mistake? Rejoin", false},
      {"a word before", "QA: Did you leave by mistake?", false},
      {"no question mark", "Did you leave by mistake", false},
      {"a part of the other sentence", "Stay connected after your meeting", false},
      {"a full stop behind the other sentence",
       "Stay connected after your meeting Chat with everyone or pick specific people.", false},
      {"an empty label", "", false},
  };
  for (const NoticeCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(teamsPostCallNotice(row.label), row.notice);
    EXPECT_EQ(teamsPostCallText(normalized(row.label)), row.notice);
  }
  EXPECT_FALSE(teamsPostCallText("Did you leave by mistake?")) << "needs a normalised text";
}

struct LeafCase {
  std::string_view sentence;
  std::string_view role;
  std::string_view subrole;
  std::string_view title;
  std::string_view description;
  bool leaf;
};

TEST(LabelRules, TakeAPostCallSentenceForANoticeInAPlainTextOnly) {
  const std::string_view stay =
      "Stay connected after your meeting Chat with everyone or pick specific people";
  const std::string_view mistake = "Did you leave by mistake?";
  const LeafCase cases[] = {
      {"by its description", "AXStaticText", "", "", stay, true},
      {"by its title", "AXStaticText", "", mistake, "", true},
      {"by its title beside another description", "AXStaticText", "", mistake, "Chat", true},
      {"by its description beside another title", "AXStaticText", "", "Chat", stay, true},
      {"another subrole does not matter", "AXStaticText", "AXApplicationAlert", "", stay, true},
      {"in a log", "AXStaticText", "AXApplicationLog", "", stay, false},
      {"in a feed", "AXStaticText", "AXApplicationFeed", "", stay, false},
      {"in a group", "AXGroup", "", "", stay, false},
      {"in a heading", "AXHeading", "", mistake, "", false},
      {"roles are case-sensitive", "axstatictext", "", "", stay, false},
      {"a sentence split over both", "AXStaticText", "", "Did you leave", "by mistake?", false},
      {"another text", "AXStaticText", "", "Leave", "", false},
      {"no text", "AXStaticText", "", "", "", false},
  };
  for (const LeafCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(providerNoticeLeaf(row.role, row.subrole, row.title, row.description), row.leaf);
  }
}

struct StrippingCase {
  std::string_view sentence;
  std::string label;
  std::string stripped;
};

TEST(LabelRules, StripOneShortcutFromTheEndOfALabel) {
  const StrippingCase cases[] = {
      {"a shortcut", "turn off microphone (⌘ + d)", "turn off microphone"},
      {"no space before it", "mute(m)", "mute"},
      {"white space around it", "mute  (m)  ", "mute"},
      {"an empty one", "mute ()", "mute"},
      {"nothing but a shortcut", "(m)", ""},
      {"only the last of two", "mute (a) (b)", "mute (a)"},
      {"one inside stays", "mute (m) now", "mute (m) now"},
      {"one that is not closed stays", "mute (m", "mute (m"},
      {"one that was not opened stays", "mute m)", "mute m)"},
      {"an opening inside it goes too", "mute (a (b)", "mute"},
      {"two endings stay", "mute (a (b))", "mute (a (b))"},
      {"square brackets stay", "mute [m]", "mute [m]"},
      {"no shortcut", "turn off camera", "turn off camera"},
      {"an empty label", "", ""},
      {"a label made to stall the search", std::string(200000, '('), std::string(200000, '(')},
  };
  for (const StrippingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(shortcutSuffixPattern.removedFrom(row.label), row.stripped);
  }
}

}  // namespace
}  // namespace callmonitor
