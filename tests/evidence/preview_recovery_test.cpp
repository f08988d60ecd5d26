// The native Zoom preview will not tell the description of its "Audio" button; the recovery does.
#include <gtest/gtest.h>

#include "evidence/call_state.h"
#include "support/snapshot_reading.h"

namespace callmonitor {
namespace {

using test::failing;
using test::part;
using test::Part;
using test::readPart;
using test::SnapshotReading;
using test::with;
using Names = std::vector<std::string>;

// A button whose description answers with this code.
Part mute(std::string title, std::int32_t code = -25200) {
  return failing(part("AXButton", std::move(title)), "AXDescription", code);
}

Part identified(Part button, std::string identifier) {
  return with(std::move(button), "AXIdentifier", std::move(identifier));
}

struct RecoveryCase {
  std::string_view sentence;
  Part element;
  std::string description;
  Names failures;
};

TEST(PreviewRecovery, GivesTheAudioButtonItsDescriptionBack) {
  const RecoveryCase cases[] = {
      {"by its title", mute("Audio"), "Audio", {}},
      {"by its identifier", identified(mute(""), "audio_button"), "Audio", {}},
      {"by an identifier that holds the word",
       identified(mute(""), "preview.audio.toggle"),
       "Audio",
       {}},
      {"by an identifier in any case", identified(mute(""), "btnAUDIO"), "Audio", {}},
      {"by its title beside another identifier", identified(mute("Audio"), "x"), "Audio", {}},
      {"by its identifier beside another title", identified(mute("Join"), "audio"), "Audio", {}},
  };
  for (const RecoveryCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const SnapshotReading reading = readPart(row.element, {.previewRecovery = true});
    ASSERT_TRUE(reading.result.snapshot);
    EXPECT_EQ(reading.result.snapshot->description, row.description);
    EXPECT_EQ(reading.result.failures, row.failures) << "the failure is withdrawn";
  }
}

TEST(PreviewRecovery, LeavesEveryOtherElementAsItIs) {
  const Names failed{"AXDescription:-25200"};
  const RecoveryCase cases[] = {
      {"a title that is not the word", mute("audio"), "", failed},
      {"a title that holds more", mute("Audio settings"), "", failed},
      {"another button", identified(mute("Video"), "video_button"), "", failed},
      {"a button that shows nothing", mute(""), "", failed},
      {"another code", mute("Audio", -25204), "", {"AXDescription:-25204"}},
      {"an element that is gone", mute("Audio", -25202), "", {"AXDescription:-25202"}},
      {"an absent description", mute("Audio", -25205), "", {}},
      {"a description without a value", mute("Audio", -25212), "", {}},
      {"a description that is there", described(part("AXButton", "Audio"), "Mute"), "Mute", {}},
      {"a check box", failing(part("AXCheckBox", "Audio"), "AXDescription", -25200), "", failed},
      {"a menu button", failing(part("AXMenuButton", "Audio"), "AXDescription", -25200), "",
       failed},
  };
  for (const RecoveryCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const SnapshotReading reading = readPart(row.element, {.previewRecovery = true});
    ASSERT_TRUE(reading.result.snapshot);
    EXPECT_EQ(reading.result.snapshot->description, row.description);
    EXPECT_EQ(reading.result.failures, row.failures);
  }
}

TEST(PreviewRecovery, KeepsTheFailuresOfOtherAttributes) {
  Part button = failing(mute("Audio"), "AXSubrole", -25200);
  EXPECT_EQ(readPart(button, {.previewRecovery = true}).result.failures, Names{"AXSubrole:-25200"});
  button = failing(button, "AXIdentifier", -25204);
  EXPECT_EQ(readPart(button, {.previewRecovery = true}).result.failures,
            (Names{"AXIdentifier:-25204", "AXSubrole:-25200"}));
}

TEST(PreviewRecovery, AsksForTheIdentifierOnItsOwnPathOnly) {
  const Names usual{"AXRole",    "AXSubrole",     "AXTitle", "AXHidden",
                    "AXEnabled", "AXDescription", "AXValue", "AXChildren"};
  EXPECT_EQ(readPart(mute("Audio")).asked, usual) << "not without the recovery";
  EXPECT_EQ(readPart(part("AXButton", "Audio"), {.previewRecovery = true}).asked, usual)
      << "not where the description is merely absent";
  EXPECT_EQ(readPart(mute("Audio", -25204), {.previewRecovery = true}).asked, usual)
      << "not for another code";
  EXPECT_EQ(readPart(failing(part("AXGroup", "Audio"), "AXDescription", -25200),
                     {.previewRecovery = true})
                .asked,
            usual)
      << "not for another role";
  const Names asked = readPart(mute(""), {.previewRecovery = true}).asked;
  EXPECT_EQ(asked, (Names{"AXRole", "AXSubrole", "AXTitle", "AXHidden", "AXEnabled",
                          "AXDescription", "AXIdentifier", "AXValue", "AXChildren"}));
}

struct HintCase {
  std::string_view sentence;
  Part element;
  std::string_view identifierClass;
};

TEST(PreviewRecovery, HintsAtTheClassOfTheIdentifier) {
  const HintCase cases[] = {
      {"audio", identified(mute("x"), "Audio_1"), "audio-id"},
      {"video", identified(mute("x"), "startVIDEO"), "video-id"},
      {"anything else", identified(mute("x"), "join"), "other-id"},
      {"an empty one", identified(mute("x"), ""), "empty-id"},
      {"none at all", mute("x"), "empty-id"},
      {"one that failed", failing(mute("x"), "AXIdentifier", -25200), "empty-id"},
      {"the recovered button", identified(mute("Audio"), "audio"), "audio-id"},
  };
  for (const HintCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const Names hints = readPart(row.element, {.previewRecovery = true}).hints;
    ASSERT_EQ(hints.size(), 1U);
    EXPECT_NE(hints[0].find(row.identifierClass), std::string::npos) << hints[0];
  }
}

TEST(PreviewRecovery, HintsRevealNeitherTitleNorIdentifier) {
  const Names hints =
      readPart(identified(mute("Call with Ada"), "ada@example.org"), {.previewRecovery = true})
          .hints;
  ASSERT_EQ(hints.size(), 1U);
  EXPECT_EQ(hints[0].find("Ada"), std::string::npos);
  EXPECT_EQ(hints[0].find("ada"), std::string::npos);
}

TEST(PreviewRecovery, HintsNothingOffItsPath) {
  EXPECT_TRUE(readPart(mute("Audio")).hints.empty());
  EXPECT_TRUE(readPart(part("AXButton", "Audio"), {.previewRecovery = true}).hints.empty());
  EXPECT_TRUE(readPart(mute("Audio", -25204), {.previewRecovery = true}).hints.empty());
}

TEST(PreviewRecovery, MakesTheNativePreviewALobby) {
  const Part window = holding(part("AXWindow", "Zoom"),
                              {identified(mute(""), "audio"), identified(mute("Video"), "video"),
                               part("AXButton", "Join"), identified(mute("More"), "menu")});
  const Evidence evidence = scanLive(window, test::preview);
  EXPECT_EQ(evidence.controls, (Names{"More", "", "Join", "", "Video", "", "", "Audio"}));
  EXPECT_TRUE(meetingLobby(evidence.controls, "zoom"));
  EXPECT_EQ(evidence.failedAttributes, Names{"AXDescription:-25200"}) << "of the other buttons";
  EXPECT_EQ(evidence.failedControlHints.size(), 3U);
  EXPECT_TRUE(std::ranges::is_sorted(evidence.failedControlHints));
  EXPECT_TRUE(evidence.complete);
}

TEST(PreviewRecovery, GivesEqualHintsOnce) {
  const Part window = holding(part("AXWindow"), {mute("Audio"), mute("Audio"), mute("Audio")});
  EXPECT_EQ(scanLive(window, test::preview).failedControlHints.size(), 1U);
}

TEST(PreviewRecovery, IsNeverTriedInABrowser) {
  const Part page = holding(part("AXWebArea"), {mute("Audio")});
  const Evidence evidence = scanLive(page, {.browser = true, .previewRecovery = true});
  EXPECT_EQ(evidence.controls, (Names{"Audio", ""}));
  EXPECT_EQ(evidence.failedAttributes, Names{"AXDescription:-25200"});
  EXPECT_TRUE(evidence.failedControlHints.empty());
  EXPECT_EQ(test::readsNamed("AXIdentifier"), 0);
}

TEST(PreviewRecovery, IsNotTriedUnlessAskedFor) {
  const Evidence evidence = scanLive(holding(part("AXWindow"), {mute("Audio")}));
  EXPECT_EQ(evidence.failedAttributes, Names{"AXDescription:-25200"});
  EXPECT_TRUE(evidence.failedControlHints.empty());
  EXPECT_EQ(test::readsNamed("AXIdentifier"), 0);
}

}  // namespace
}  // namespace callmonitor
