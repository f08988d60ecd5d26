#include "platform/linux/address_repair.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

struct Case {
  std::string name;
  std::string input;
  std::string expected;
};

TEST(RepairedAddress, EncodesWhatBrowsersLeaveRawBehindThePath) {
  const std::vector<Case> cases{
      {"an address without query or fragment is unchanged", "https://h/a{b}|^%zz",
       "https://h/a{b}|^%zz"},
      {"each raw character of a query is encoded", "https://h/?{}|^\\[]\"`",
       "https://h/?%7B%7D%7C%5E%5C%5B%5D%22%60"},
      {"each raw character of a fragment is encoded", "https://h/#{}|^\\[]\"`",
       "https://h/#%7B%7D%7C%5E%5C%5B%5D%22%60"},
      {"the path before a query stays as it is", "https://h/{x}?{y}", "https://h/{x}?%7By%7D"},
      {"the brackets of a numeric host stay", "https://[::1]/?a=[1]", "https://[::1]/?a=%5B1%5D"},
      {"a whole escape stays", "https://h/?a=%7b%7B", "https://h/?a=%7b%7B"},
      {"a percent sign without two digits is encoded", "https://h/?a=100%&b=%g1",
       "https://h/?a=100%25&b=%25g1"},
      {"a percent sign at the end is encoded", "https://h/?a%", "https://h/?a%25"},
      {"a percent sign before the last character is encoded", "https://h/?a%4", "https://h/?a%254"},
      {"a percent sign before an escape is encoded alone", "https://h/?%%41", "https://h/?%25%41"},
      {"a second question mark and what else is legal stay", "https://h/?a?b/c:d@e!$&'()*+,;=~",
       "https://h/?a?b/c:d@e!$&'()*+,;=~"},
      {"nothing stays nothing", "", ""},
  };
  for (const Case& each : cases) EXPECT_EQ(repairedAddress(each.input), each.expected) << each.name;
}

}  // namespace
}  // namespace callmonitor::platform
