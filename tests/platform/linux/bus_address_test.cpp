#include "platform/linux/bus_address.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace callmonitor::platform {
namespace {

struct Case {
  std::string name;
  std::string address;
  bool local;
};

TEST(NamesLocalSockets, AcceptsNothingButSocketsOfThisMachine) {
  const std::vector<Case> cases{
      {"a path", "unix:path=/tmp/at-spi2-4K3/socket", true},
      {"an abstract name", "unix:abstract=/tmp/dbus-1Hx", true},
      {"a path and its server", "unix:path=/run/user/1000/at-spi/bus_0,guid=00ff", true},
      {"an abstract name and its server", "unix:abstract=/tmp/dbus-1Hx,guid=00ff", true},
      {"a path of encoded characters", "unix:path=/tmp/a%3bunixexec%3apath%3d", true},
      {"two sockets", "unix:path=/a,guid=0;unix:abstract=b", true},
      {"a command", "unixexec:path=/usr/bin/touch,argv1=/tmp/a", false},
      {"a command after a socket", "unix:path=/a;unixexec:path=/usr/bin/touch,argv1=b", false},
      {"a command before a socket", "unixexec:path=/usr/bin/touch;unix:path=/a", false},
      {"a command between two sockets", "unix:path=/a;unixexec:path=/b;unix:path=/c", false},
      {"another machine", "tcp:host=127.0.0.1,port=80", false},
      {"another machine after a socket", "unix:path=/a;tcp:host=127.0.0.1,port=80", false},
      {"another machine and a secret", "nonce-tcp:host=127.0.0.1,port=80,noncefile=/a", false},
      {"a login elsewhere", "unixssh:host=h", false},
      {"a container", "x-machine-unix:machine=.host", false},
      {"a container of another kind", "x-machine-kernel:machine=.host", false},
      {"a bus in the kernel", "kernel:path=/a", false},
      {"a launcher of buses", "autolaunch:", false},
      {"an address kept elsewhere", "launchd:env=A", false},
      {"a directory for sockets", "unix:dir=/tmp", false},
      {"a directory of temporary sockets", "unix:tmpdir=/tmp", false},
      {"the directory of the session", "unix:runtime=yes", false},
      {"a server before the path", "unix:guid=00ff,path=/a", false},
      {"a path and an abstract name", "unix:path=/a,abstract=b", false},
      {"a path and arguments", "unix:path=/a,argv1=b", false},
      {"a path and an unknown key", "unix:path=/a,guid=0,env=b", false},
      {"a path and nothing more", "unix:path=/a,", false},
      {"a path and nothing between", "unix:path=/a,,guid=0", false},
      {"no path", "unix:path=", false},
      {"no path but a server", "unix:path=,guid=0", false},
      {"no abstract name", "unix:abstract=", false},
      {"only the kind", "unix:", false},
      {"a path alone", "/tmp/socket", false},
      {"another case", "UNIX:path=/a", false},
      {"white space before it", " unix:path=/a", false},
      {"no alternative after a socket", "unix:path=/a;", false},
      {"no alternative before a socket", ";unix:path=/a", false},
      {"no alternative between two sockets", "unix:path=/a;;unix:path=/b", false},
      {"only a separator", ";", false},
      {"nothing", "", false},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(namesLocalSockets(each.address), each.local) << each.name;
  }
}

}  // namespace
}  // namespace callmonitor::platform
