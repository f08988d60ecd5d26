// Several messages to one application under way at the same time, so that the application never
// idles while the questions that will come next are known.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/bus_message.h"

namespace callmonitor::platform {

// Told of each message as it is sent: the object and the member that is called. For tests.
using MessageObserver = std::function<void(const ObjectName& object, std::string_view member)>;

struct Pipeline;

// A message that was sent and whose reply nobody has taken. Letting go of it makes the connection
// ignore the reply, whenever that comes.
struct Underway {
  Pipeline* pipeline = nullptr;
  sd_bus_slot* slot = nullptr;
  double sent = 0;   // uptime seconds
  BusMessage reply;  // null until it arrived
  Underway() = default;
  Underway(const Underway&) = delete;
  Underway& operator=(const Underway&) = delete;
  ~Underway() { sd_bus_slot_unref(slot); }
};

struct ReleaseBus {
  void operator()(sd_bus* bus) const { sd_bus_unref(bus); }
};

struct Pipeline {
  std::unique_ptr<sd_bus, ReleaseBus> connection;  // null: the pipeline is closed
  FarEnd end = FarEnd::bus;
  std::string application;  // unique bus name; only its objects are asked this way
  // By object and member. The members are literals.
  std::map<ObjectName, std::map<std::string_view, std::unique_ptr<Underway>>> underway;
  std::size_t unanswered = 0;
  double lastAnswer = 0;  // uptime seconds
  // Seconds that the application took of late for one message: the longest, fading.
  double slowest = 0;
};

// Opens the pipeline for one application over a connection that someone else keeps open.
void openPipeline(Pipeline& pipeline, sd_bus* connection, FarEnd end, std::string application);
// Every reply that was not taken is lost.
void closePipeline(Pipeline& pipeline);

// Whether the application's objects are asked through the pipeline now.
[[nodiscard]] bool leadsTo(const Pipeline& pipeline, const std::string& application);
// Whether this question was put and its reply not taken.
[[nodiscard]] bool isUnderway(const Pipeline& pipeline, const ObjectName& object,
                              std::string_view member);
// Forgets what was asked about one object, or all.
void dropUnderway(Pipeline& pipeline, const ObjectName& object);
void dropAllUnderway(Pipeline& pipeline);

// How many messages may be unanswered when one more goes out. What is asked later waits behind
// them all, and must still be answered within `limit` (microseconds) of a slow application.
[[nodiscard]] std::size_t unansweredAllowed(double slowest, std::uint64_t limit);
[[nodiscard]] bool hasRoom(const Pipeline& pipeline, std::uint64_t limit);

// Sends a message without waiting. `member` is a literal. False when it could not be sent; the
// question is then not under way.
bool submit(Pipeline& pipeline, const ObjectName& object, std::string_view member,
            BusMessage message, const MessageObserver& observer);

enum class Waited { answered, late, lost };

// Waits until the reply to a question that is under way is there, for at most `limit` microseconds
// from now, and takes it off: `reply` is the answer, an error reply included. `lost` means that the
// connection has ended.
[[nodiscard]] Waited takeReply(Pipeline& pipeline, const ObjectName& object,
                               std::string_view member, std::uint64_t limit, BusMessage& reply);

}  // namespace callmonitor::platform
