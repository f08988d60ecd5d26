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

#include "platform/linux/pulse_cookie.h"
#include "platform/linux/pulse_socket.h"
#include "platform/linux/run_loop.h"
#include "platform/linux/sound_server_talk.h"
#include "platform/platform.h"

namespace callmonitor::platform {
namespace {

// Seconds for which there must have been no socket until there is no server: one that is being
// restarted, or comes up after PipeWire at the beginning of a session, takes less.
constexpr double awayLimit = 5.0;

// A descriptor of the library's and what the library waits for on it.
using Waiting = std::pair<int, std::uint32_t>;

}  // namespace

struct PulseAudio {
  pa_mainloop* loop = nullptr;
  bool stepping = false;
  std::optional<double> awaySince;  // uptime; since when every look found no socket
  std::vector<Waiting> waiting;     // as of the library's last look
  std::vector<Waiting> watched;
  std::vector<LoopSourceHandle> watches;

  // Of one connection.
  pa_context* context = nullptr;
  bool lost = false;
  bool changed = false;  // since the snapshot that is being taken was begun
  bool complete = false;
  ServerPatience patience;
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
  noteAnswer(audio.patience);
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
  noteQuestion(audio.patience);
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
  if (!audio.patience.askedAt) ask(audio);
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
  if (audio.context == nullptr) return;
  const bool outermost = stepLoop(audio.stepping, [&audio] {
    return pa_mainloop_iterate(audio.loop, 0, nullptr) > 0 && !audio.lost;
  });
  if (!outermost) return;
  if (audio.lost) {
    disconnectPulse(audio);
  } else if (audio.waiting != audio.watched) {
    watchAnew(audio);
  }
}

// Takes a variable out of the environment for as long as it lives.
class WithoutVariable {
 public:
  explicit WithoutVariable(const char* name) : name_(name) {
    if (const char* value = std::getenv(name)) value_ = value;
    if (value_) unsetenv(name);
  }
  ~WithoutVariable() {
    if (value_) setenv(name_, value_->c_str(), 1);
  }
  WithoutVariable(const WithoutVariable&) = delete;
  WithoutVariable& operator=(const WithoutVariable&) = delete;

 private:
  const char* name_;
  std::optional<std::string> value_;
};

// A connection that neither waits nor writes. The library would ask the X server where its own
// server is, and wait for that answer without limit, and it would make a cookie where one is named
// or usual: so it sees neither the display nor the name of a cookie.
pa_context* makeContext(pa_mainloop_api* api) {
  const std::string cookie = pulseCookieFile(
      {std::getenv("PULSE_COOKIE"), std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME")});
  const WithoutVariable display("DISPLAY");
  const WithoutVariable namedCookie("PULSE_COOKIE");
  pa_context* context = pa_context_new(api, "call-monitor");
  if (context == nullptr || pa_context_load_cookie_from_file(context, cookie.c_str()) >= 0) {
    return context;
  }
  pa_context_unref(context);
  return nullptr;
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
  const PulseServer server = pulseServer();
  if (server.socket != SocketLook::away) {
    audio.awaySince.reset();
  } else if (!audio.awaySince) {
    audio.awaySince = systemUptime();
  }
  if (server.socket != SocketLook::accepts) return;
  audio.context = makeContext(pa_mainloop_get_api(audio.loop));
  if (audio.context == nullptr) return;
  noteQuestion(audio.patience);
  pa_context_set_state_callback(audio.context, onState, &audio);
  if (pa_context_connect(audio.context, server.address.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr) <
      0) {
    disconnectPulse(audio);
    return;
  }
  step(audio);
}

void disconnectPulse(PulseAudio& audio) {
  // Before the library opens anything in the place of what they watch.
  audio.watches.clear();
  audio.watched.clear();
  // Somebody was there, or nobody has looked meanwhile.
  audio.awaySince.reset();
  if (audio.context == nullptr) return;
  pa_context_set_state_callback(audio.context, nullptr, nullptr);
  pa_context_set_subscribe_callback(audio.context, nullptr, nullptr);
  pa_context_disconnect(audio.context);
  pa_context_unref(audio.context);
  audio.context = nullptr;
  audio.lost = false;
  audio.changed = false;
  audio.complete = false;
  audio.patience = {};
  audio.known = {};
  audio.building = {};
}

void hearPulse(PulseAudio& audio) {
  step(audio);
  if (audio.context == nullptr) return;
  if (!audio.patience.askedAt) {
    ask(audio);
    step(audio);
  }
  noteTime(audio.patience);
}

Hearing pulseHearing(const PulseAudio& audio) {
  if (audio.context == nullptr) {
    const bool gone = audio.awaySince && systemUptime() - *audio.awaySince >= awayLimit;
    return gone ? Hearing::absent : Hearing::learning;
  }
  if (audio.patience.silent) return Hearing::silent;
  return audio.complete ? Hearing::known : Hearing::learning;
}

const PulseSnapshot& pulseSnapshot(const PulseAudio& audio) {
  return audio.known;
}

}  // namespace callmonitor::platform
