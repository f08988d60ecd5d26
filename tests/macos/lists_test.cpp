// The sound system's processes and the window server's windows, as they are listed.
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "macos/stepped_desktop.h"

namespace callmonitor::macos {
namespace {

struct Lists : SteppedDesktop {};

TEST_F(Lists, EveryProcessIsListedInItsOrder) {
  play("audio org.a.a in\naudio org.b.b out\naudio org.c.c in out\naudio org.d.d\nend 1s\n");
  EXPECT_EQ(sounds(), (Words{"org.a.a in", "org.b.b out", "org.c.c in out", "org.d.d"}));
}

TEST_F(Lists, AProcessWithoutABundleIdentifierIsListedToo) {
  play("audio org.a.a in\nend 1s\n");
  desktop().audioFaults.bundle = [] { return standins::madeText(""); };
  EXPECT_EQ(sounds(), Words{" in"});
}

TEST_F(Lists, NoProcessesIsAnEmptyListAndNoListIsNone) {
  play("audio none\nend 1s\n");
  EXPECT_EQ(sounds(), Words{});
  play("audio absent\nend 1s\n");
  EXPECT_EQ(sounds(), Words{"absent"});
}

TEST_F(Lists, OfAListThatGrewOrShrankWhatIsThereIsTaken) {
  play("audio org.a.a in\naudio org.b.b out\nend 1s\n");
  desktop().audioFaults.size = 4;
  EXPECT_EQ(sounds(), Words{"org.a.a in"}) << "there was room for one";
  desktop().audioFaults.size = 400;
  EXPECT_EQ(sounds(), (Words{"org.a.a in", "org.b.b out"}));
}

TEST_F(Lists, WindowsAreListedWithWhatIsKnownOfThem) {
  play(R"(
app a org.example.A
screen
  entry a "One" layer=0 number=7
  entry "Nobody's" layer=3
  entry a
end 1s
)");
  std::optional<std::vector<platform::OnScreenWindow>> windows;
  platform::inCycle([&] { windows = platform::onScreenWindows(); });
  ASSERT_TRUE(windows.has_value());
  ASSERT_EQ(windows->size(), 3U);
  EXPECT_EQ(windows->at(0).ownerPid, 101);
  EXPECT_EQ(windows->at(0).name, "One");
  EXPECT_EQ(windows->at(0).layer, 0);
  EXPECT_EQ(windows->at(0).number, 7);
  EXPECT_EQ(windows->at(1).ownerPid, std::nullopt);
  EXPECT_EQ(windows->at(1).name, "Nobody's");
  EXPECT_EQ(windows->at(1).layer, 3);
  EXPECT_EQ(windows->at(1).number, std::nullopt);
  EXPECT_EQ(windows->at(2).ownerPid, 101);
  EXPECT_EQ(windows->at(2).name, std::nullopt);
}

TEST_F(Lists, NoWindowsIsAnEmptyListAndWhatIsNoListOfWindowsIsNone) {
  struct Row {
    const char* sentence;
    std::function<Object*()> list;
    std::optional<std::size_t> size;
  };
  for (const Row& row : std::vector<Row>{
           {"an empty list", [] { return standins::madeList({}); }, 0},
           {"an entry that says nothing",
            [] { return standins::madeList({standins::made(standins::Dictionary{})}); }, 1},
           {"NULL", [] { return nullptr; }, std::nullopt},
           {"a list with a hole", [] { return standins::madeList({nullptr}); }, std::nullopt},
           {"a list of texts", [] { return standins::madeList({standins::madeText("x")}); },
            std::nullopt},
       }) {
    play("app a org.example.A\nend 1s\n");
    desktop().windowList = row.list;
    std::optional<std::vector<platform::OnScreenWindow>> windows;
    platform::inCycle([&] { windows = platform::onScreenWindows(); });
    EXPECT_EQ(windows ? std::optional(windows->size()) : std::nullopt, row.size) << row.sentence;
  }
}

}  // namespace
}  // namespace callmonitor::macos
