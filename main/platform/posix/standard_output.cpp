#include "platform/posix/standard_output.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace callmonitor::platform {

void prepareStandardOutput() {
  // A reader that goes away must end the program, even where the parent had this signal ignored.
  signal(SIGPIPE, SIG_DFL);
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr);
#ifdef F_SETNOSIGPIPE
  // Where a pipe or socket can be told to raise no signal, it stays told for whoever inherits it.
  fcntl(STDOUT_FILENO, F_SETNOSIGPIPE, 0);
#endif

  // A slow reader must delay a line, never cut it.
  if (const int flags = fcntl(STDOUT_FILENO, F_GETFL); flags >= 0 && (flags & O_NONBLOCK) != 0) {
    fcntl(STDOUT_FILENO, F_SETFL, flags & ~O_NONBLOCK);
  }
}

}  // namespace callmonitor::platform
