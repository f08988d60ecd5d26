// What a native client's window does not tell, and what that does to the stream: participant tiles,
// the window's own title, dialogs, and the preview before a meeting.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "macos/fault_effects.h"
#include "macos/faulty_answers.h"

namespace callmonitor::macos {
namespace {

// The toolbar is out of sight: the tile alone says that this is a call.
constexpr const char* zoomTile = R"(
app zoom us.zoom.xos
  window w "Zoom Meeting"
    group tile "QA, Computer audio unmuted" role-description="Video render"
front zoom
audio zoom in out
end 1h
)";
constexpr const char* joinedTile = "joined \"Zoom Meeting\" window=1";
constexpr const char* unknownTile = "unknown \"Zoom Meeting\"";

struct NativeFaults : FaultEffects {
  // Every answer of one attribute that is none, on one element or, by the empty text, on all.
  void expectNothingOf(const std::string& element, const std::string& attribute,
                       const char* callsMeanwhile) {
    for (const NoAnswer& answer : noAnswers({"text"})) {
      expectEffect(
          zoomTile, {joinedTile}, attribute + ": " + answer.sentence,
          [&] {
            desktop().attributeFaults[{element, attribute}] = answer.fault;
          },
          [] { desktop().attributeFaults.clear(); },
          {callsMeanwhile, "complete", told(attribute, answer.told)});
    }
  }
};

TEST_F(NativeFaults, ATileThatDoesNotTellWhatItIsSaysNothingOfACall) {
  expectNothingOf("", "AXRoleDescription", unknownTile);
  expectNothingOf("app:101/tile", "AXRoleDescription", unknownTile);
}

TEST_F(NativeFaults, OfOtherElementsTheRoleDescriptionIsNotMissed) {
  expectNothingOf("app:101/w", "AXRoleDescription", joinedTile);
}

TEST_F(NativeFaults, AWindowThatDoesNotTellItsTitleIsNoMeetingsWindow) {
  expectNothingOf("app:101/w", "AXTitle", "unknown \"\"");
}

TEST_F(NativeFaults, AnAnswerWithinItsTimeOutIsAnAnswer) {
  for (const char* attribute : {"AXRoleDescription", "AXTitle", "AXSubrole"}) {
    expectEffect(
        zoomTile, {joinedTile}, attribute,
        [&] {
          desktop().attributeFaults[{"", attribute}].delay = 0.1;
        },
        [] { desktop().attributeFaults.clear(); }, {joinedTile});
  }
}

// A dialog of a native client, and it alone, says that the meeting is over.
TEST_F(NativeFaults, ADialogThatDoesNotTellThatItIsOneEndsNoCall) {
  for (const NoAnswer& answer : noAnswers({"text"})) {
    SCOPED_TRACE(answer.sentence);
    play(std::string(zoomTile) + R"(
at 1500ms:
  add w
    group d subrole="AXDialog"
      text "The host has ended this meeting."
)");
    for (int i = 0; i < 2; ++i) expectCycle({joinedTile}, "before");
    desktop().attributeFaults[{"app:101/d", "AXSubrole"}] = answer.fault;
    for (int i = 0; i < 3; ++i) {
      expectCycle({joinedTile, "complete", told("AXSubrole", answer.told)}, "meanwhile");
    }
    desktop().attributeFaults.clear();
    expectCycle({"left \"Zoom Meeting\""}, "afterwards");
    expectCycle({""}, "afterwards");
  }
}

// The screen before a meeting, whose audio button fails to tell its description.
struct PreviewFaults : FaultEffects {
  void playPreview(const std::string& title = "") {
    play(R"(
app zoom us.zoom.xos
  window w "Zoom"
    button a )" +
         (title.empty() ? title : "\"" + title + "\"") +
         R"( identifier="preview-audio-button"
      fails AXDescription failure
    button "Video, turn on, currently off"
    button "Start"
    checkbox "Always show this preview when joining"
front zoom
audio zoom
end 1h
)");
  }

  // What the scan tells, and the client in front.
  static void expectFound(const std::vector<Json>& records, bool audio, bool lobby,
                          const std::string& when) {
    const auto scans = support::ofKind(records, "client-scan");
    ASSERT_EQ(scans.size(), 1U) << when;
    EXPECT_EQ(scans.front()["audio"], audio) << when;
    EXPECT_EQ(scans.front()["lobby"], lobby) << when;
    const auto clients = support::ofKind(records, "client");
    ASSERT_EQ(clients.size(), 1U) << when;
    EXPECT_EQ(clients.front()["lobby"], lobby) << when;
  }

  void expectPreview(bool audio, bool lobby, const std::vector<std::string>& failed,
                     const std::string& when) {
    const std::vector<Json> records = cycle();
    EXPECT_EQ(calls(records), "") << when;
    EXPECT_EQ(stage(records), "complete") << when;
    EXPECT_EQ(failures(records), failed) << when;
    expectFound(records, audio, lobby, when);
  }
};

TEST_F(PreviewFaults, AButtonThatDoesNotTellWhichItIsStaysAFailure) {
  for (const NoAnswer& answer : noAnswers({})) {
    SCOPED_TRACE(answer.sentence);
    playPreview();
    expectPreview(true, true, {}, "before");
    desktop().attributeFaults[{"app:101/a", "AXIdentifier"}] = answer.fault;
    Words failed = told("AXDescription", platform::code::failure);
    if (answer.told != 0) failed.push_back(told("AXIdentifier", answer.told).front());
    for (int i = 0; i < 2; ++i) expectPreview(false, false, failed, "meanwhile");
    desktop().attributeFaults.clear();
    expectPreview(true, true, {}, "afterwards");
  }
}

// Whether it is asked for its identifier besides is the scan's own affair.
TEST_F(PreviewFaults, AButtonThatItsTitleNamesIsFoundWhateverItsIdentifier) {
  for (const NoAnswer& answer : noAnswers({})) {
    SCOPED_TRACE(answer.sentence);
    playPreview("Audio");
    desktop().attributeFaults[{"app:101/a", "AXIdentifier"}] = answer.fault;
    for (int i = 0; i < 2; ++i) expectFound(cycle(), true, true, "meanwhile");
  }
}

// Only the failure that the preview is known for is taken for its audio button.
TEST_F(PreviewFaults, ADescriptionThatIsMissingInAnotherWayIsNotMadeUp) {
  for (const NoAnswer& answer : noAnswers({"text"})) {
    if (answer.told == platform::code::failure) continue;
    SCOPED_TRACE(answer.sentence);
    playPreview();
    desktop().attributeFaults[{"app:101/a", "AXDescription"}] = answer.fault;
    for (int i = 0; i < 2; ++i) {
      expectPreview(false, false, told("AXDescription", answer.told), "meanwhile");
    }
    desktop().attributeFaults.clear();
    expectPreview(true, true, {}, "afterwards");
  }
}

}  // namespace
}  // namespace callmonitor::macos
