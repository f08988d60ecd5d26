#include "platform/linux/pulse_cookie.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

void write(const std::string& path, std::size_t length) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path) << std::string(length, 'c');
}

TEST(PulseCookieFile, IsTheFirstThatThereIs) {
  const std::string root = testing::TempDir() + "cookies-" + std::to_string(getpid());
  const std::string named = root + "/named";
  const std::string home = root + "/home";
  const std::string configuration = root + "/configuration";
  const std::string none = root + "/none";
  write(named, 256);
  write(home + "/.config/pulse/cookie", 256);
  write(home + "/.pulse-cookie", 256);
  write(configuration + "/pulse/cookie", 256);
  write(root + "/old/.pulse-cookie", 256);
  write(root + "/short/.config/pulse/cookie", 255);
  const std::string old = root + "/old";
  const std::string shortOne = root + "/short";

  struct Case {
    std::string name;
    CookiePlaces places;
    std::string expected;
  };
  const std::vector<Case> cases{
      {"the named one goes first", {named.c_str(), configuration.c_str(), home.c_str()}, named},
      {"then that of the configuration directory",
       {nullptr, configuration.c_str(), home.c_str()},
       configuration + "/pulse/cookie"},
      {"which is usually below the home directory",
       {nullptr, "", home.c_str()},
       home + "/.config/pulse/cookie"},
      {"then the old place", {nullptr, nullptr, old.c_str()}, old + "/.pulse-cookie"},
      {"a named one that is not there is none",
       {none.c_str(), nullptr, home.c_str()},
       home + "/.config/pulse/cookie"},
      {"one that is too short is none", {nullptr, nullptr, shortOne.c_str()}, "/dev/zero"},
      {"there is no cookie", {none.c_str(), none.c_str(), none.c_str()}, "/dev/zero"},
      {"nothing says where one may be", {}, "/dev/zero"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(pulseCookieFile(each.places), each.expected) << each.name;
  }
  EXPECT_FALSE(std::filesystem::exists(none));
  std::filesystem::remove_all(root);
}

}  // namespace
}  // namespace callmonitor::platform
