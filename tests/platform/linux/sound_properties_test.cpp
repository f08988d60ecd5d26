#include "platform/linux/sound_properties.h"

#include <gtest/gtest.h>

#include <optional>

namespace callmonitor::platform {
namespace {

TEST(PropertyReading, TakesOnlyWhatAPropertyCanMean) {
  const SoundProperties properties{
      {"yes", "true"},  {"one", "1"},       {"no", "false"}, {"pid", "4711"},
      {"text", "12ab"}, {"negative", "-4"}, {"zero", "0"},   {"large", "99999999999"},
      {"empty", ""}};
  EXPECT_EQ(propertyOf(properties, "no"), "false");
  EXPECT_EQ(propertyOf(properties, "none"), "");
  EXPECT_TRUE(isSet(properties, "yes"));
  EXPECT_TRUE(isSet(properties, "one"));
  EXPECT_FALSE(isSet(properties, "no"));
  EXPECT_FALSE(isSet(properties, "none"));
  EXPECT_EQ(processIn(properties, "pid"), 4711);
  for (const char* name : {"text", "negative", "zero", "large", "empty", "none"}) {
    EXPECT_EQ(processIn(properties, name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace callmonitor::platform
