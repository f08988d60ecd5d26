// The library has an event loop of its own, whose descriptor the run loop watches; all of its
// callbacks run while that loop is stepped here, on the program's one thread.
#include "platform/linux/pipewire_audio.h"

#include <pipewire/impl-module.h>
#include <pipewire/pipewire.h>
#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "platform/linux/run_loop.h"
#include "platform/linux/runtime_directory.h"
#include "platform/linux/sound_server_talk.h"

// The library's calls are macros around an extension that every compiler of this desktop has.
#pragma GCC diagnostic ignored "-Wpedantic"

namespace callmonitor::platform {
namespace {

// The library looks for its server in what these name, and elsewhere than this program does when
// none of them is set.
constexpr std::array directoryVariables{"PIPEWIRE_REMOTE", "PIPEWIRE_RUNTIME_DIR",
                                        "XDG_RUNTIME_DIR"};

bool isNamed(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// A client or node that is being listened to.
struct Bound {
  PipeWireAudio* audio = nullptr;
  std::uint32_t number = 0;
  pw_proxy* proxy = nullptr;
  spa_hook listener{};

  Bound() = default;
  ~Bound() {
    if (proxy == nullptr) return;
    spa_hook_remove(&listener);
    pw_proxy_destroy(proxy);
  }
  Bound(const Bound&) = delete;
  Bound& operator=(const Bound&) = delete;
};

SoundProperties propertiesOf(const spa_dict* dictionary) {
  SoundProperties properties;
  if (dictionary == nullptr) return properties;
  for (std::uint32_t i = 0; i < dictionary->n_items; ++i) {
    const spa_dict_item& item = dictionary->items[i];
    if (item.key != nullptr && item.value != nullptr) properties.emplace(item.key, item.value);
  }
  return properties;
}

}  // namespace

struct PipeWireAudio {
  pw_loop* loop = nullptr;
  pw_context* context = nullptr;
  LoopSourceHandle watch;
  bool stepping = false;

  // Of one connection.
  pw_core* core = nullptr;
  pw_registry* registry = nullptr;
  spa_hook coreListener{};
  spa_hook registryListener{};
  bool lost = false;
  // The first answer says that all objects were announced, the second that each has had its say.
  int answers = 0;
  ServerPatience patience;
  // The question to which the server answers when it has said all that it had to say before.
  int question = 0;
  PipeWireGraph graph;
  std::map<std::uint32_t, Bound> clients;
  std::map<std::uint32_t, Bound> nodes;

  PipeWireAudio() = default;
  ~PipeWireAudio();
  PipeWireAudio(const PipeWireAudio&) = delete;
  PipeWireAudio& operator=(const PipeWireAudio&) = delete;
};

namespace {

constexpr int answersNeeded = 2;

void ask(PipeWireAudio& audio) {
  audio.question = pw_core_sync(audio.core, PW_ID_CORE, 0);
  noteQuestion(audio.patience);
}

void disconnect(PipeWireAudio& audio) {
  if (audio.core == nullptr) return;
  audio.nodes.clear();
  audio.clients.clear();
  if (audio.registry != nullptr) {
    spa_hook_remove(&audio.registryListener);
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(audio.registry));
    audio.registry = nullptr;
  }
  spa_hook_remove(&audio.coreListener);
  pw_core_disconnect(audio.core);
  audio.core = nullptr;
  audio.graph = {};
  audio.answers = 0;
  audio.patience = {};
  audio.lost = false;
}

// Lets the library run the callbacks of what has arrived. A connection cannot be ended from within
// one of them, so one that was lost is ended here.
void step(PipeWireAudio& audio) {
  const bool outermost = stepLoop(audio.stepping, [&audio] {
    pw_loop_enter(audio.loop);
    const int handled = pw_loop_iterate(audio.loop, 0);
    pw_loop_leave(audio.loop);
    return handled > 0 && !audio.lost;
  });
  if (outermost && audio.lost) disconnect(audio);
}

void onNodeInfo(void* data, const pw_node_info* info) {
  const auto& bound = *static_cast<Bound*>(data);
  GraphObject& node = bound.audio->graph.nodes[bound.number];
  node.told = true;
  node.running = info->state == PW_NODE_STATE_RUNNING;
  if ((info->change_mask & PW_NODE_CHANGE_MASK_PROPS) != 0) {
    mergeProperties(node.properties, propertiesOf(info->props));
  }
}

void onClientInfo(void* data, const pw_client_info* info) {
  const auto& bound = *static_cast<Bound*>(data);
  GraphObject& client = bound.audio->graph.clients[bound.number];
  client.told = true;
  if ((info->change_mask & PW_CLIENT_CHANGE_MASK_PROPS) != 0) {
    mergeProperties(client.properties, propertiesOf(info->props));
  }
}

const pw_node_events& nodeEvents() {
  static const pw_node_events events = [] {
    pw_node_events made{};
    made.version = PW_VERSION_NODE_EVENTS;
    made.info = onNodeInfo;
    return made;
  }();
  return events;
}

const pw_client_events& clientEvents() {
  static const pw_client_events events = [] {
    pw_client_events made{};
    made.version = PW_VERSION_CLIENT_EVENTS;
    made.info = onClientInfo;
    return made;
  }();
  return events;
}

void onGlobal(void* data, std::uint32_t number, std::uint32_t /*permissions*/, const char* type,
              std::uint32_t /*version*/, const spa_dict* announced) {
  auto& audio = *static_cast<PipeWireAudio*>(data);
  const bool isNode = std::string_view(type) == PW_TYPE_INTERFACE_Node;
  if (!isNode && std::string_view(type) != PW_TYPE_INTERFACE_Client) return;
  GraphObject object;
  object.properties = propertiesOf(announced);
  (isNode ? audio.graph.nodes : audio.graph.clients).insert_or_assign(number, std::move(object));

  auto& bounds = isNode ? audio.nodes : audio.clients;
  bounds.erase(number);
  Bound& bound = bounds[number];
  bound.audio = &audio;
  bound.number = number;
  // Without a proxy the object never has its say, and nothing is known.
  const auto bind = [&](std::uint32_t version) {
    bound.proxy =
        static_cast<pw_proxy*>(pw_registry_bind(audio.registry, number, type, version, 0));
    return bound.proxy != nullptr;
  };
  if (isNode) {
    if (!bind(PW_VERSION_NODE)) return;
    pw_node_add_listener(reinterpret_cast<pw_node*>(bound.proxy), &bound.listener, &nodeEvents(),
                         &bound);
  } else {
    if (!bind(PW_VERSION_CLIENT)) return;
    pw_client_add_listener(reinterpret_cast<pw_client*>(bound.proxy), &bound.listener,
                           &clientEvents(), &bound);
  }
}

void onGlobalRemove(void* data, std::uint32_t number) {
  auto& audio = *static_cast<PipeWireAudio*>(data);
  audio.nodes.erase(number);
  audio.clients.erase(number);
  audio.graph.nodes.erase(number);
  audio.graph.clients.erase(number);
}

void onDone(void* data, std::uint32_t id, int number) {
  auto& audio = *static_cast<PipeWireAudio*>(data);
  if (id != PW_ID_CORE || !audio.patience.askedAt || audio.question != number) return;
  noteAnswer(audio.patience);
  if (++audio.answers < answersNeeded) ask(audio);
}

// What is said of another object than the core concerns one that has just gone.
void onError(void* data, std::uint32_t id, int /*number*/, int /*result*/, const char* /*text*/) {
  if (id == PW_ID_CORE) static_cast<PipeWireAudio*>(data)->lost = true;
}

const pw_core_events& coreEvents() {
  static const pw_core_events events = [] {
    pw_core_events made{};
    made.version = PW_VERSION_CORE_EVENTS;
    made.done = onDone;
    made.error = onError;
    return made;
  }();
  return events;
}

const pw_registry_events& registryEvents() {
  static const pw_registry_events events = [] {
    pw_registry_events made{};
    made.version = PW_VERSION_REGISTRY_EVENTS;
    made.global = onGlobal;
    made.global_remove = onGlobalRemove;
    return made;
  }();
  return events;
}

}  // namespace

PipeWireAudio::~PipeWireAudio() {
  watch.reset();
  disconnect(*this);
  if (context != nullptr) pw_context_destroy(context);
  if (loop != nullptr) pw_loop_destroy(loop);
  pw_deinit();
}

void EndPipeWireAudio::operator()(PipeWireAudio* audio) const {
  delete audio;
}

PipeWireAudioHandle makePipeWireAudio() {
  pw_init(nullptr, nullptr);
  // A server that comes and goes is no news for the person who reads standard error.
  pw_log_set_level(SPA_LOG_LEVEL_NONE);
  PipeWireAudioHandle audio(new PipeWireAudio);
  audio->loop = pw_loop_new(nullptr);
  if (audio->loop == nullptr) return nullptr;
  // The usual configuration is for programs that have streams of their own, and loads what they
  // need; to listen, the protocol is enough.
  // A context comes with a thread for the samples of streams. It is cancelled, because a request to
  // end that reaches it while it starts may be lost, and whoever waits for its end waits for ever.
  audio->context = pw_context_new(
      audio->loop, pw_properties_new(PW_KEY_CONFIG_NAME, "null", "loop.cancel", "true", nullptr),
      0);
  if (audio->context == nullptr) return nullptr;
  pw_data_loop_stop(pw_context_get_data_loop(audio->context));
  if (pw_context_load_module(audio->context, "libpipewire-module-protocol-native", nullptr,
                             nullptr) == nullptr) {
    return nullptr;
  }
  audio->watch =
      watchDescriptor(pw_loop_get_fd(audio->loop), EPOLLIN, [here = audio.get()] { step(*here); });
  return audio;
}

void connectPipeWire(PipeWireAudio& audio) {
  if (audio.core != nullptr) return;
  pw_properties* options = nullptr;
  if (std::none_of(directoryVariables.begin(), directoryVariables.end(), isNamed)) {
    const std::string socket = runtimeDirectory() + "/" + PW_DEFAULT_REMOTE;
    options = pw_properties_new(PW_KEY_REMOTE_NAME, socket.c_str(), nullptr);
  }
  audio.core = pw_context_connect(audio.context, options, 0);
  if (audio.core == nullptr) return;
  pw_core_add_listener(audio.core, &audio.coreListener, &coreEvents(), &audio);
  audio.registry = pw_core_get_registry(audio.core, PW_VERSION_REGISTRY, 0);
  if (audio.registry == nullptr) {
    disconnect(audio);
    return;
  }
  pw_registry_add_listener(audio.registry, &audio.registryListener, &registryEvents(), &audio);
  ask(audio);
}

void hearPipeWire(PipeWireAudio& audio) {
  step(audio);
  if (audio.core == nullptr) return;
  if (!audio.patience.askedAt) ask(audio);
  noteTime(audio.patience);
}

Hearing pipeWireHearing(const PipeWireAudio& audio) {
  if (audio.core == nullptr) return Hearing::absent;
  if (audio.patience.silent) return Hearing::silent;
  return audio.answers < answersNeeded ? Hearing::learning : Hearing::known;
}

const PipeWireGraph& pipeWireGraph(const PipeWireAudio& audio) {
  return audio.graph;
}

}  // namespace callmonitor::platform
