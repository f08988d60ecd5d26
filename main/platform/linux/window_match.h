// Which accessible frame belongs to which window of the window server. Nothing but name and place
// ties the two together, and neither is quite reliable.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace callmonitor::platform {

// A rectangle on the screen, in pixels.
struct Extents {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
};

// An accessible frame or a server's window that has no partner yet. Extents are absent when they
// could not be read.
struct MatchCandidate {
  std::string name;
  std::optional<Extents> extents;
  // A window beyond doubt, whose partner must be somewhere; not a prompt, a dock or an empty frame.
  bool needsPartner = true;
};

// Positions in the two lists. A match is certain when the names agree and no other pairing of the
// two was as good; only a certain match may be remembered, for a wrong one would stay.
struct WindowMatch {
  std::size_t frame = 0;
  std::size_t window = 0;
  bool certain = false;
};

// The text without the invisible marks that steer the direction of text.
[[nodiscard]] std::string withoutDirectionMarks(std::string_view text);

// The name with direction marks removed and white space of every kind folded: the window server's
// names carry marks around right-to-left text that accessible names do not.
[[nodiscard]] std::string comparableName(std::string_view name);

// How far the two names speak for the same window.
enum class NameAgreement {
  none,
  // The accessible name says more in its middle: a browser tells "Audio playing" or "Camera
  // recording" there, between the page's title and its own name.
  withAddition,
  equal,
};
[[nodiscard]] NameAgreement nameAgreement(std::string_view frame, std::string_view window);

// Pairs frames with the windows of the same process, each at most once. Agreeing names come first,
// the nearer place decides between them; where no name agrees, a lone frame and a lone window in
// the very same place are a pair. Frames without a name never have a window. The result is in
// order of frames.
[[nodiscard]] std::vector<WindowMatch> matchWindows(const std::vector<MatchCandidate>& frames,
                                                    const std::vector<MatchCandidate>& windows);

// Whether a frame and a window that need a partner are both left without one: they may be the same,
// so a list made of the matches alone could lack it.
[[nodiscard]] bool partnersMissing(const std::vector<MatchCandidate>& frames,
                                   const std::vector<MatchCandidate>& windows,
                                   const std::vector<WindowMatch>& matches);

// Whether some frame that needs a partner and some such window bear agreeing names. Of a window
// whose owner is not known this is all that can tell that it might be the frame's.
[[nodiscard]] bool namesMeet(const std::vector<MatchCandidate>& frames,
                             const std::vector<MatchCandidate>& windows);

}  // namespace callmonitor::platform
