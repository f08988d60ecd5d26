#include "identity/process_audio.h"

#include <array>

namespace callmonitor {
namespace {

constexpr std::array<std::string_view, 2> browserFamilies{"com.google.Chrome",
                                                          "com.microsoft.edgemac"};
constexpr std::string_view unattributedFamily = "com.apple.Safari";
constexpr std::string_view ownBundlePrefix = "ai.corvana.desktop";
constexpr std::string_view systemBundlePrefix = "com.apple.";
constexpr std::string_view faceTime = "com.apple.FaceTime";

}  // namespace

std::string audioFamily(std::string_view bundle) {
  for (const std::string_view family : browserFamilies) {
    if (bundle.starts_with(std::string(family) + ".app.")) return std::string(family);
  }
  return std::string(bundle);
}

bool neverAttributed(std::string_view bundle) {
  return audioFamily(bundle) == unattributedFamily;
}

std::optional<ClientAudio> clientAudio(std::string_view bundle,
                                       const std::optional<std::vector<AudioProcess>>& processes) {
  if (!processes || neverAttributed(bundle)) return std::nullopt;
  const std::string family = audioFamily(bundle);
  const std::string helper = family + ".helper";
  std::optional<ClientAudio> audio;
  for (const AudioProcess& process : *processes) {
    if (process.bundle != family && process.bundle != helper &&
        !process.bundle.starts_with(helper + ".")) {
      continue;
    }
    if (!audio) audio.emplace();
    audio->input = audio->input || process.input;
    audio->output = audio->output || process.output;
  }
  return audio;
}

bool genericClient(std::string_view bundle, bool regular, const std::optional<ClientAudio>& audio) {
  if (!regular || bundle.empty()) return false;
  if (bundle.starts_with(ownBundlePrefix)) return false;
  if (bundle.starts_with(systemBundlePrefix) && bundle != faceTime) return false;
  return audio && audio->input && audio->output;
}

}  // namespace callmonitor
