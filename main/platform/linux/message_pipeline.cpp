// Replies are matched by the library, message by message: a reply to what was let go of is
// nobody's.
#include "platform/linux/message_pipeline.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace callmonitor::platform {
namespace {

// No more of a message's limit than this share may go by in the queue before it.
constexpr double queueShare = 0.25;
// What remains of an old slow answer with each new one: a pause of 20 ms is forgotten in about 40.
constexpr double fading = 0.9;
// More would not be faster: it covers the elements that are fetched ahead, several times over.
constexpr std::size_t mostUnanswered = 128;

int arrived(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
  auto& each = *static_cast<Underway*>(data);
  Pipeline& pipeline = *each.pipeline;
  each.reply.reset(sd_bus_message_ref(message));
  const double now = systemUptime();
  const double took = now - std::max(each.sent, pipeline.lastAnswer);
  pipeline.slowest = std::max(took, pipeline.slowest * fading);
  pipeline.lastAnswer = now;
  --pipeline.unanswered;
  return 0;
}

}  // namespace

void openPipeline(Pipeline& pipeline, sd_bus* connection, FarEnd end, std::string application) {
  closePipeline(pipeline);
  pipeline.connection.reset(sd_bus_ref(connection));
  pipeline.end = end;
  pipeline.application = std::move(application);
}

void closePipeline(Pipeline& pipeline) {
  dropAllUnderway(pipeline);
  pipeline.connection.reset();
  pipeline.application.clear();
  pipeline.slowest = 0;
  pipeline.lastAnswer = 0;
}

bool leadsTo(const Pipeline& pipeline, const std::string& application) {
  return pipeline.connection && pipeline.application == application;
}

bool isUnderway(const Pipeline& pipeline, const ObjectName& object, std::string_view member) {
  const auto found = pipeline.underway.find(object);
  return found != pipeline.underway.end() && found->second.contains(member);
}

void dropUnderway(Pipeline& pipeline, const ObjectName& object) {
  const auto found = pipeline.underway.find(object);
  if (found == pipeline.underway.end()) return;
  for (const auto& [member, each] : found->second) {
    if (!each->reply) --pipeline.unanswered;
  }
  pipeline.underway.erase(found);
}

void dropAllUnderway(Pipeline& pipeline) {
  pipeline.underway.clear();
  pipeline.unanswered = 0;
}

std::size_t unansweredAllowed(double slowest, std::uint64_t limit) {
  const double share = static_cast<double>(limit) / 1e6 * queueShare;
  if (slowest * static_cast<double>(mostUnanswered) <= share) return mostUnanswered;
  return static_cast<std::size_t>(share / slowest);
}

bool hasRoom(const Pipeline& pipeline, std::uint64_t limit) {
  return pipeline.unanswered < unansweredAllowed(pipeline.slowest, limit);
}

bool submit(Pipeline& pipeline, const ObjectName& object, std::string_view member,
            BusMessage message, const MessageObserver& observer) {
  if (!pipeline.connection || !message) return false;
  auto each = std::make_unique<Underway>();
  each->pipeline = &pipeline;
  each->sent = systemUptime();
  // Whoever takes the reply keeps the time; the library's own limit must not come before.
  constexpr std::uint64_t never = UINT64_MAX;
  if (sd_bus_call_async(pipeline.connection.get(), &each->slot, message.get(), arrived, each.get(),
                        never) < 0) {
    return false;
  }
  if (observer) observer(object, member);
  ++pipeline.unanswered;
  pipeline.underway[object].insert_or_assign(member, std::move(each));
  return true;
}

Waited takeReply(Pipeline& pipeline, const ObjectName& object, std::string_view member,
                 std::uint64_t limit, BusMessage& reply) {
  Underway& wanted = *pipeline.underway.at(object).at(member);
  sd_bus* connection = pipeline.connection.get();
  const double deadline = systemUptime() + static_cast<double>(limit) / 1e6;
  while (!wanted.reply) {
    const int processed = sd_bus_process(connection, nullptr);
    // A connection that ends answers what is open with an error of its own, which is not a reply.
    if (processed < 0 || sd_bus_is_open(connection) <= 0) return Waited::lost;
    if (processed > 0) continue;
    const double left = (deadline - systemUptime()) * 1e6;
    if (left < 1) return Waited::late;
    const int waited = sd_bus_wait(connection, static_cast<std::uint64_t>(left));
    if (waited < 0 && waited != -EINTR) return Waited::lost;
  }
  reply = std::move(wanted.reply);
  auto questions = pipeline.underway.find(object);
  questions->second.erase(member);
  if (questions->second.empty()) pipeline.underway.erase(questions);
  return Waited::answered;
}

}  // namespace callmonitor::platform
