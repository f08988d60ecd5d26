// One identifier for one element, for as long as anybody looks at it.
#include "evidence/element_registry.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace callmonitor
