#include "evidence/snapshot.h"

namespace callmonitor {
namespace {

bool contains(std::string_view text, std::string_view word) {
  return lowerCased(text).find(word) != std::string::npos;
}

}  // namespace

std::string previewHint(std::string_view title, std::string_view identifier) {
  const std::string_view titleClass = title.empty()      ? "empty-title"
                                      : title == "Audio" ? "audio-title"
                                                         : "other-title";
  const std::string_view identifierClass = identifier.empty()              ? "empty-id"
                                           : contains(identifier, "audio") ? "audio-id"
                                           : contains(identifier, "video") ? "video-id"
                                                                           : "other-id";
  return std::string(titleClass) + ":" + std::string(identifierClass);
}

bool previewAudioButton(std::string_view title, std::string_view identifier) {
  return title == "Audio" || contains(identifier, "audio");
}

}  // namespace callmonitor
