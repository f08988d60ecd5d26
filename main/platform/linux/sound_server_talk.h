// What talking to a sound server through its library takes, whichever server it is: the library's
// loop is stepped without waiting, and the server is given a time to answer.
#pragma once

#include <functional>
#include <optional>

namespace callmonitor::platform {

// Whether the server answers in time.
struct ServerPatience {
  std::optional<double> askedAt;  // uptime; since when an answer is awaited
  bool silent = false;            // an answer was or is overdue, and none has come since
};

// A question went out now.
void noteQuestion(ServerPatience& patience);
// The last question was answered.
void noteAnswer(ServerPatience& patience);
// Time has gone by: an answer that is still awaited may be overdue.
void noteTime(ServerPatience& patience);

// Takes steps of a library's loop for as long as `stepOnce` says that something was done, and not
// endlessly. A step that leads back here leaves the rest to the outer call; false for that inner
// one, which has done nothing.
bool stepLoop(bool& stepping, const std::function<bool()>& stepOnce);

}  // namespace callmonitor::platform
