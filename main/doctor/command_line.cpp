#include "doctor/command_line.h"

namespace callmonitor::doctor {

std::optional<Request> requestIn(const std::vector<std::string>& words) {
  Request request;
  for (const std::string& word : words) {
    if (word == "--titles") {
      request.titles = true;
    } else if (word == "--help" || word == "-h") {
      request.help = true;
    } else {
      return std::nullopt;
    }
  }
  return request;
}

}  // namespace callmonitor::doctor
