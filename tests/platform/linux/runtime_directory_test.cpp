#include "platform/linux/runtime_directory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

namespace callmonitor::platform {
namespace {

TEST(RuntimeDirectory, IsTheNamedOneOrThatOfTheUsersSession) {
  const std::string session = "/run/user/" + std::to_string(getuid());
  EXPECT_EQ(runtimeDirectory("/srv/run"), "/srv/run");
  EXPECT_EQ(runtimeDirectory(""), session) << "an empty variable counts as none";
  EXPECT_EQ(runtimeDirectory(nullptr), session);
}

}  // namespace
}  // namespace callmonitor::platform
