// Meetings as texts, so that tables stay readable and failures print well.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "identity/meeting_identity.h"

namespace callmonitor::test {

// The key of a meeting; absent when there is none. Every key begins with its provider and ":".
inline std::optional<std::string> keyOf(const std::optional<Conference>& meeting) {
  if (!meeting) return std::nullopt;
  EXPECT_TRUE(meeting->key.starts_with(meeting->provider + ":")) << meeting->key;
  return meeting->key;
}

// The key of the meeting that an address names, launch pages unwrapped.
inline std::optional<std::string> meetingKey(std::string_view raw) {
  return keyOf(conference(raw, /*allowLaunch=*/true));
}

}  // namespace callmonitor::test
