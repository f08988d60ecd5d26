// The stand-ins notice what the real frameworks would let pass or die of.
#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <string>

#include "macos/stepped_desktop.h"
#include "platform/macos/owned.h"

namespace callmonitor::macos {
namespace {

using platform::Owned;
using standins::handedOut;

TEST(Standins, AReferenceThatIsNotOwnedCannotBeReleased) {
  EXPECT_DEATH(
      {
        Object* item = standins::madeText("x");
        const void* list = handedOut(standins::madeList({item}));
        CFRelease(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(list), 0));
      },
      "released that is not owned");
}

TEST(Standins, AnObjectIsGoneWithItsLastReference) {
  EXPECT_DEATH(
      {
        const void* text = handedOut(standins::madeText("x"));
        CFRelease(text);
        CFRelease(text);
      },
      "used after its release");
  EXPECT_DEATH(
      {
        const void* list = handedOut(standins::madeList({standins::madeText("x")}));
        const void* item = CFArrayGetValueAtIndex(static_cast<CFArrayRef>(list), 0);
        CFRelease(list);
        (void)CFGetTypeID(item);
      },
      "used after its release");
}

TEST(Standins, NullIsNoObject) {
  EXPECT_DEATH(CFRelease(nullptr), "NULL was used");
  EXPECT_DEATH((void)CFGetTypeID(nullptr), "NULL was used");
}

TEST(Standins, AnObjectIsOfOneType) {
  EXPECT_DEATH(
      (void)CFBooleanGetValue(static_cast<CFBooleanRef>(handedOut(standins::madeNumber(1)))),
      "of another type");
}

TEST(Standins, WhatIsLeftToAPoolNeedsOne) {
  EXPECT_DEATH(
      {
        standins::play(written("app a org.example.A\nend 1s\n"));
        (void)platform::frontmostApplication();
      },
      "there is none");
  EXPECT_DEATH(
      {
        standins::play(written("app a org.example.A\nend 1s\n"));
        (void)platform::readAttribute(platform::applicationElement(101, 0.2), "AXRole");
      },
      "there is none");
}

TEST(Standins, PoolsEndInTheirOrder) {
  EXPECT_DEATH(
      {
        void* outer = standins::openPool();
        (void)standins::openPool();
        standins::closePool(outer);
      },
      "in their order");
}

TEST(Standins, AReadThatNobodyWroteDownEndsTheRun) {
  EXPECT_DEATH(
      {
        standins::play(written("app a org.example.A\nend 1s\n"));
        platform::inCycle([] {
          (void)platform::readAttribute(platform::applicationElement(101, 0.2), "AXPosition");
        });
      },
      "nobody wrote down what \"app:101\" answers for AXPosition");
}

TEST(Standins, ReferencesAreCountedWhoeverElseHoldsTheObject) {
  const long before = standins::heldReferences();
  {
    const auto list =
        Owned<CFTypeRef>::taken(handedOut(standins::madeList({standins::madeText("x")})));
    const auto item =
        Owned<CFTypeRef>::shared(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(list.get()), 0));
    EXPECT_EQ(standins::heldReferences(), before + 2);
    EXPECT_EQ(standins::livingObjects(), 2);
  }
  EXPECT_EQ(standins::heldReferences(), before);
  EXPECT_EQ(standins::livingObjects(), 0);
}

TEST(OwnedReference, GoesWithItsOwner) {
  auto one = Owned<CFTypeRef>::taken(handedOut(standins::madeText("x")));
  Owned<CFTypeRef> other = std::move(one);
  EXPECT_EQ(standins::heldReferences(), 1);
  EXPECT_TRUE(other);
  *other.slot() = handedOut(standins::madeText("y"));
  EXPECT_EQ(standins::heldReferences(), 1) << "a slot gives up what it held";
  other = Owned<CFTypeRef>();
  EXPECT_EQ(standins::heldReferences(), 0);
  EXPECT_FALSE(Owned<CFTypeRef>::taken(nullptr));
  EXPECT_FALSE(Owned<CFTypeRef>::shared(nullptr));
}

}  // namespace
}  // namespace callmonitor::macos
