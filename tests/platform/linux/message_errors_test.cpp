#include "platform/linux/message_errors.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

struct Case {
  std::string name;
  std::string error;
  std::int32_t code;
};

TEST(CodeOfBusError, TellsAGoneElementFromAnUnreachableOne) {
  const std::string prefix = "org.freedesktop.DBus.Error.";
  const std::vector<Case> cases{
      {"a living application says that the object is gone", prefix + "UnknownObject", -25202},
      {"a hung application is not a closed view", prefix + "Timeout", -25204},
      {"nor is one whose answer is timed out by the kernel", prefix + "TimedOut", -25204},
      {"nor one that ended before it answered", prefix + "NoReply", -25204},
      {"nor one whose name has vanished", prefix + "ServiceUnknown", -25204},
      {"nor one whose name has no owner", prefix + "NameHasNoOwner", -25204},
      {"nor one behind a lost connection", prefix + "Disconnected", -25204},
      {"nor one behind a bus that is away", prefix + "NoServer", -25204},
      {"a method that the object lacks is an unsupported attribute", prefix + "UnknownMethod",
       -25205},
      {"so is an interface that it lacks", prefix + "UnknownInterface", -25205},
      {"so is a property that it lacks", prefix + "UnknownProperty", -25205},
      {"any other error is a failure", prefix + "AccessDenied", -25200},
      {"an error of another family is a failure", "org.example.UnknownObject", -25200},
      {"an error without a name is a failure", "", -25200},
  };
  for (const Case& each : cases) EXPECT_EQ(codeOfBusError(each.error), each.code) << each.name;
}

TEST(IsTimeout, HoldsOnlyForAnAnswerThatIsLate) {
  EXPECT_TRUE(isTimeout("org.freedesktop.DBus.Error.Timeout"));
  EXPECT_TRUE(isTimeout("org.freedesktop.DBus.Error.TimedOut"));
  EXPECT_FALSE(isTimeout("org.freedesktop.DBus.Error.NoReply"));
  EXPECT_FALSE(isTimeout("org.freedesktop.DBus.Error.ServiceUnknown"));
}

}  // namespace
}  // namespace callmonitor::platform
