// One identifier for one element, for as long as anybody looks at it.
#include "evidence/element_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "platform/scripted/desktop.h"

namespace callmonitor {
namespace {

TEST(ElementRegistry, GivesTheSameElementTheSameIdentifier) {
  scripted::reset();
  ElementRegistry registry;
  const std::string first = elementID(registry, scripted::element("window"));
  EXPECT_FALSE(first.empty());
  EXPECT_EQ(elementID(registry, scripted::element("window")), first) << "by another reference";
  EXPECT_EQ(scripted::desktop().identifiersMade, 1U);
}

TEST(ElementRegistry, GivesDifferentElementsDifferentIdentifiers) {
  scripted::reset();
  ElementRegistry registry;
  const std::string first = elementID(registry, scripted::element("window"));
  const std::string second = elementID(registry, scripted::element("area"));
  EXPECT_NE(first, second);
  EXPECT_EQ(elementID(registry, scripted::element("window")), first);
}

TEST(ElementRegistry, TakesIdentifiersFromTheSystemsRandomSource) {
  scripted::reset();
  ElementRegistry registry;
  const std::string identifier = elementID(registry, scripted::element("window"));
  scripted::reset();
  EXPECT_EQ(identifier, platform::randomUUID());
}

TEST(ElementRegistry, AnElementThatIsGoneKeepsItsIdentifier) {
  scripted::reset();
  scripted::desktop().elements["window"] = {};
  ElementRegistry registry;
  const std::string identifier = elementID(registry, scripted::element("window"));
  scripted::desktop().elements.clear();
  EXPECT_EQ(elementID(registry, scripted::element("window")), identifier);
}

TEST(ElementRegistry, ForgetsOnlyWhatNobodyKeeps) {
  scripted::reset();
  ElementRegistry registry;
  const std::string kept = elementID(registry, scripted::element("kept"));
  const std::string dropped = elementID(registry, scripted::element("dropped"));
  forgetAllBut(registry, {kept, "never given"});
  EXPECT_EQ(registry.identifiers.size(), 1U);
  EXPECT_EQ(elementID(registry, scripted::element("kept")), kept);
  EXPECT_NE(elementID(registry, scripted::element("dropped")), dropped);
}

TEST(ElementRegistry, ManyElementsStandFarApart) {
  scripted::reset();
  ElementRegistry registry;
  constexpr std::size_t many = 10'000;
  for (std::size_t i = 0; i < many; ++i) {
    static_cast<void>(elementID(registry, scripted::element("page" + std::to_string(i))));
  }
  ASSERT_EQ(registry.identifiers.size(), many);
  std::size_t fullest = 0;
  for (std::size_t bucket = 0; bucket < registry.identifiers.bucket_count(); ++bucket) {
    fullest = std::max(fullest, registry.identifiers.bucket_size(bucket));
  }
  // A look-up compares with what stands in one bucket; chance puts hardly more than eight there.
  EXPECT_LE(fullest, 16U);
}

}  // namespace
}  // namespace callmonitor
