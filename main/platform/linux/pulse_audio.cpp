// The library's own event loop is stepped without ever waiting in it: whenever one of its
// descriptors is ready in the run loop, and before each answer. Its requests wait for their replies
// for half a minute, so the time that a server may take is kept here.
#include "platform/linux/pulse_audio.h"

#include <poll.h>
#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/mainloop.h>
#include <pulse/proplist.h>
#include <pulse/subscribe.h>
#include <sys/epoll.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "platform/linux/pulse_socket.h"
#include "platform/linux/run_loop.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// Seconds that the server may take to answer. It answers within milliseconds, and it is asked once
// a cycle, that is about once a second.
constexpr double answerLimit = 0.5;
// Steps of the library's loop in one go; far more than the messages of one cycle take.
constexpr int mostSteps = 256;

// A descriptor of the library's and what the library waits for on it.
using Waiting = std::pair<int, std::uint32_t>;

}  // namespace

struct PulseAudio {
  pa_mainloop* loop = nullptr;
  bool stepping = false;
  std::vector<Waiting> waiting;  // as of the library's last look
  std::vector<Waiting> watched;
  std::vector<LoopSourceHandle> watches;

  // Of one connection.
  pa_context* context = nullptr;
  bool lost = false;
  bool changed = false;  // since the snapshot that is being taken was begun
  bool complete = false;
  bool silent = false;
  std::optional<double> askedAt;  // uptime; since when a reply is awaited
  PulseSnapshot known;
  PulseSnapshot building;

  PulseAudio() = default;
  ~PulseAudio();
  PulseAudio(const PulseAudio&) = delete;
  PulseAudio& operator=(const PulseAudio&) = delete;
};

namespace {

SoundProperties propertiesOf(const pa_proplist* list) {
  SoundProperties properties;
  void* state = nullptr;
  while (const char* key = pa_proplist_iterate(list, &state)) {
    // Absent for a value that is no text, such as an icon.
    if (const char* value = pa_proplist_gets(list, key)) properties.emplace(key, value);
  }
  return properties;
}

std::optional<std::uint32_t> numberIn(std::uint32_t index) {
  return index == PA_INVALID_INDEX ? std::nullopt : std::optional(index);
}

// The library's replies come one object at a time, and then a last call without an object whose
// `end` is negative for a request that failed.
template <class Info>
bool isObject(PulseAudio& audio, const Info* info, int end) {
  // A request that failed leaves the snapshot incomplete for ever; a new connection begins anew.
  if (end < 0) audio.lost = true;
  return end == 0 && info != nullptr;
}

void onServer(pa_context* /*context*/, const pa_server_info* info, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  if (info == nullptr) {
    audio.lost = true;
    return;
  }
  audio.building.serverName = info->server_name != nullptr ? info->server_name : "";
}

void onSink(pa_context* /*context*/, const pa_sink_info* info, int end, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  if (!isObject(audio, info, end)) return;
  audio.building.sinks[info->index] = {false, info->state == PA_SINK_SUSPENDED};
}

void onSource(pa_context* /*context*/, const pa_source_info* info, int end, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  if (!isObject(audio, info, end)) return;
  audio.building.sources[info->index] = {info->monitor_of_sink != PA_INVALID_INDEX,
                                         info->state == PA_SOURCE_SUSPENDED};
}

template <class Info>
PulseStream streamOf(const Info& info, bool input, std::uint32_t device) {
  PulseStream stream;
  stream.input = input;
  stream.client = numberIn(info.client);
  stream.device = numberIn(device);
  stream.corked = info.corked != 0;
  stream.resampler = info.resample_method != nullptr ? info.resample_method : "";
  stream.properties = propertiesOf(info.proplist);
  return stream;
}

void onPlayback(pa_context* /*context*/, const pa_sink_input_info* info, int end, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  if (!isObject(audio, info, end)) return;
  audio.building.streams.push_back(streamOf(*info, false, info->sink));
}

void ask(PulseAudio& audio);

// The last of the replies that make a snapshot.
void onCapture(pa_context* /*context*/, const pa_source_output_info* info, int end, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  if (isObject(audio, info, end)) {
    audio.building.streams.push_back(streamOf(*info, true, info->source));
    return;
  }
  if (audio.lost) return;
  audio.known = std::exchange(audio.building, {});
  audio.complete = true;
  audio.silent = false;
  audio.askedAt.reset();
  if (audio.changed) ask(audio);
}

// Gives a request up that could not even be sent; true when it could.
bool sent(PulseAudio& audio, pa_operation* request) {
  if (request == nullptr) {
    audio.lost = true;
    return false;
  }
  pa_operation_unref(request);
  return true;
}

void ask(PulseAudio& audio) {
  pa_context* context = audio.context;
  audio.changed = false;
  audio.building = {};
  audio.askedAt = systemUptime();
  static_cast<void>(
      sent(audio, pa_context_get_server_info(context, onServer, &audio)) &&
      sent(audio, pa_context_get_sink_info_list(context, onSink, &audio)) &&
      sent(audio, pa_context_get_source_info_list(context, onSource, &audio)) &&
      sent(audio, pa_context_get_sink_input_info_list(context, onPlayback, &audio)) &&
      sent(audio, pa_context_get_source_output_info_list(context, onCapture, &audio)));
}

void onEvent(pa_context* /*context*/, pa_subscription_event_type_t /*type*/,
             std::uint32_t /*index*/, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  audio.changed = true;
  if (!audio.askedAt) ask(audio);
}

void onState(pa_context* context, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  const pa_context_state_t state = pa_context_get_state(context);
  if (!PA_CONTEXT_IS_GOOD(state)) audio.lost = true;
  if (state != PA_CONTEXT_READY) return;
  pa_context_set_subscribe_callback(context, onEvent, &audio);
  constexpr auto events = static_cast<pa_subscription_mask_t>(
      PA_SUBSCRIPTION_MASK_SINK | PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SINK_INPUT |
      PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT);
  if (sent(audio, pa_context_subscribe(context, events, nullptr, nullptr))) ask(audio);
}

int lookWithoutWaiting(pollfd* descriptors, unsigned long count, int /*timeout*/, void* data) {
  auto& audio = *static_cast<PulseAudio*>(data);
  audio.waiting.clear();
  for (unsigned long i = 0; i < count; ++i) {
    const auto wanted = static_cast<unsigned>(descriptors[i].events);
    audio.waiting.emplace_back(descriptors[i].fd, ((wanted & POLLIN) != 0 ? EPOLLIN : 0U) |
                                                      ((wanted & POLLOUT) != 0 ? EPOLLOUT : 0U));
  }
  return poll(descriptors, count, 0);
}

void step(PulseAudio& audio);

void watchAnew(PulseAudio& audio) {
  audio.watches.clear();
  audio.watched = audio.waiting;
  for (const auto& [descriptor, events] : audio.watched) {
    audio.watches.push_back(watchDescriptor(descriptor, events, [&audio] { step(audio); }));
  }
}

// Lets the library run the callbacks of what has arrived. A connection cannot be ended from within
// one of them, so one that was lost is ended here.
void step(PulseAudio& audio) {
  if (audio.stepping || audio.context == nullptr) return;
  audio.stepping = true;
  for (int i = 0; i < mostSteps && pa_mainloop_iterate(audio.loop, 0, nullptr) > 0; ++i) {
    if (audio.lost) break;
  }
  audio.stepping = false;
  if (audio.lost) {
    disconnectPulse(audio);
  } else if (audio.waiting != audio.watched) {
    watchAnew(audio);
  }
}

// Made while the library does not see the display: it would ask the X server where its own server
// is, and wait for that answer without limit.
pa_context* contextWithoutDisplay(pa_mainloop_api* api) {
  constexpr const char* variable = "DISPLAY";
  const char* value = std::getenv(variable);
  const auto display = value != nullptr ? std::optional<std::string>(value) : std::nullopt;
  if (display) unsetenv(variable);
  pa_context* context = pa_context_new(api, "call-monitor");
  if (display) setenv(variable, display->c_str(), 1);
  return context;
}

}  // namespace

PulseAudio::~PulseAudio() {
  disconnectPulse(*this);
  if (loop != nullptr) pa_mainloop_free(loop);
}

void EndPulseAudio::operator()(PulseAudio* audio) const {
  delete audio;
}

PulseAudioHandle makePulseAudio() {
  PulseAudioHandle audio(new PulseAudio);
  audio->loop = pa_mainloop_new();
  if (audio->loop == nullptr) return nullptr;
  pa_mainloop_set_poll_func(audio->loop, lookWithoutWaiting, audio.get());
  return audio;
}

void connectPulse(PulseAudio& audio) {
  if (audio.context != nullptr) return;
  const auto server = pulseServer();
  if (!server) return;
  audio.context = contextWithoutDisplay(pa_mainloop_get_api(audio.loop));
  if (audio.context == nullptr) return;
  audio.askedAt = systemUptime();
  pa_context_set_state_callback(audio.context, onState, &audio);
  if (pa_context_connect(audio.context, server->c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    disconnectPulse(audio);
    return;
  }
  step(audio);
}

void disconnectPulse(PulseAudio& audio) {
  // Before the library opens anything in the place of what they watch.
  audio.watches.clear();
  audio.watched.clear();
  if (audio.context == nullptr) return;
  pa_context_set_state_callback(audio.context, nullptr, nullptr);
  pa_context_set_subscribe_callback(audio.context, nullptr, nullptr);
  pa_context_disconnect(audio.context);
  pa_context_unref(audio.context);
  audio.context = nullptr;
  audio.lost = false;
  audio.changed = false;
  audio.complete = false;
  audio.silent = false;
  audio.askedAt.reset();
  audio.known = {};
  audio.building = {};
}

void hearPulse(PulseAudio& audio) {
  step(audio);
  if (audio.context == nullptr) return;
  if (!audio.askedAt) {
    ask(audio);
    step(audio);
  } else if (systemUptime() - *audio.askedAt > answerLimit) {
    audio.silent = true;
  }
}

Hearing pulseHearing(const PulseAudio& audio) {
  if (audio.context == nullptr) return Hearing::absent;
  if (audio.silent) return Hearing::silent;
  return audio.complete ? Hearing::known : Hearing::learning;
}

const PulseSnapshot& pulseSnapshot(const PulseAudio& audio) {
  return audio.known;
}

}  // namespace callmonitor::platform
