// A program with one stream, through PulseAudio's interface, that does as it is told:
//
//     sound_client record|play [meter] [DEVICE]
//
// "meter" asks for peaks only, as the level meters of mixers do. Each line of standard input is an
// order: "pause", "go on" or "end", which ends the stream and not the program. Standard output says
// "ready", and "done" for each order once the server has carried it out.
#include <pulse/pulseaudio.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Client {
  pa_mainloop* loop = nullptr;
  pa_context* context = nullptr;
  pa_stream* stream = nullptr;
  bool finished = false;
};

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "sound_client: %s\n", what);
  std::exit(1);
}

void say(const char* word) {
  std::printf("%s\n", word);
  std::fflush(stdout);
}

template <class Condition>
void runUntil(Client& client, Condition condition) {
  while (!condition()) {
    if (pa_mainloop_iterate(client.loop, 1, nullptr) < 0) fail("the loop ended");
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(client.context))) fail("the server is gone");
  }
}

void playSilence(pa_stream* stream, std::size_t bytes, void* /*data*/) {
  const std::vector<std::uint8_t> silence(bytes);
  pa_stream_write(stream, silence.data(), bytes, nullptr, 0, PA_SEEK_RELATIVE);
}

void dropSound(pa_stream* stream, std::size_t /*bytes*/, void* /*data*/) {
  const void* sound = nullptr;
  std::size_t bytes = 0;
  while (pa_stream_readable_size(stream) > 0) {
    if (pa_stream_peek(stream, &sound, &bytes) < 0 || bytes == 0) return;
    pa_stream_drop(stream);
  }
}

void connect(Client& client) {
  client.loop = pa_mainloop_new();
  client.context = pa_context_new(pa_mainloop_get_api(client.loop), "sound_client");
  if (pa_context_connect(client.context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
    fail("no server");
  }
  runUntil(client, [&] { return pa_context_get_state(client.context) == PA_CONTEXT_READY; });
}

void open(Client& client, bool record, bool meter, const char* device) {
  // Mixers want some peaks a second, and ask for no more samples than that.
  const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, meter ? 25U : 44100U, 1};
  client.stream = pa_stream_new(client.context, "a stream", &format, nullptr);
  if (client.stream == nullptr) fail("no stream");
  pa_stream_set_write_callback(client.stream, playSilence, nullptr);
  pa_stream_set_read_callback(client.stream, dropSound, nullptr);
  const auto flags = meter ? PA_STREAM_PEAK_DETECT : PA_STREAM_NOFLAGS;
  const int result =
      record ? pa_stream_connect_record(client.stream, device, nullptr, flags)
             : pa_stream_connect_playback(client.stream, device, nullptr, flags, nullptr, nullptr);
  if (result < 0) fail("the stream is refused");
  runUntil(client, [&] {
    if (!PA_STREAM_IS_GOOD(pa_stream_get_state(client.stream))) fail("the stream has failed");
    return pa_stream_get_state(client.stream) == PA_STREAM_READY;
  });
}

void pause(Client& client, bool paused) {
  client.finished = false;
  pa_operation_unref(pa_stream_cork(
      client.stream, paused ? 1 : 0,
      [](pa_stream*, int, void* data) { static_cast<Client*>(data)->finished = true; }, &client));
  runUntil(client, [&] { return client.finished; });
}

void end(Client& client) {
  pa_stream_disconnect(client.stream);
  runUntil(client, [&] { return pa_stream_get_state(client.stream) == PA_STREAM_TERMINATED; });
}

void obey(pa_mainloop_api* api, pa_io_event* /*event*/, int /*descriptor*/,
          pa_io_event_flags_t /*events*/, void* data) {
  auto& orders = *static_cast<std::string*>(data);
  char letter = 0;
  if (fread(&letter, 1, 1, stdin) != 1) {
    api->quit(api, 0);
    return;
  }
  orders += letter;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) fail("usage: sound_client record|play [meter] [DEVICE]");
  const bool record = std::string_view(arguments[1]) == "record";
  const bool meter = count > 2 && std::string_view(arguments[2]) == "meter";
  const int deviceAt = meter ? 3 : 2;
  Client client;
  connect(client);
  open(client, record, meter, count > deviceAt ? arguments[deviceAt] : nullptr);

  std::setvbuf(stdin, nullptr, _IONBF, 0);
  std::string orders;
  pa_mainloop_api* api = pa_mainloop_get_api(client.loop);
  api->io_new(api, 0, PA_IO_EVENT_INPUT, obey, &orders);
  say("ready");
  for (;;) {
    int status = 0;
    if (pa_mainloop_iterate(client.loop, 1, &status) < 0) return status;
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(client.context))) {
      // The server is gone; the process stays, as programs do.
      for (;;) {
        if (fgetc(stdin) == EOF) return 0;
      }
    }
    const std::size_t length = orders.find('\n');
    if (length == std::string::npos) continue;
    const std::string order = orders.substr(0, length);
    orders.erase(0, length + 1);
    if (order == "pause") {
      pause(client, true);
    } else if (order == "go on") {
      pause(client, false);
    } else if (order == "end") {
      end(client);
    } else {
      fail("an order that nobody knows");
    }
    say("done");
  }
}
