#include "tracking/client_activity.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include "evidence/call_state.h"
#include "evidence/label_scan.h"
#include "evidence/web_areas.h"
#include "identity/applications.h"
#include "identity/conference.h"
#include "identity/meeting_identity.h"
#include "tracking/records.h"

namespace callmonitor {
namespace {

// One deadline for all that a look reads of the focused window, in uptime seconds.
constexpr double clientLookSeconds = 0.5;

// A meeting client in front and what its labels show.
struct Client {
  std::string provider;
  std::string key;
  Evidence evidence;
};

// The page of a browser that a look is about: the first with any identity.
struct Page {
  Element area;
  Conference client;
};

std::optional<Page> meetingPage(const Element& window, double deadline) {
  for (const Element& area : webAreas(window, deadline).roots) {
    const auto raw = addressIn(readBefore(deadline, area, attributes::url));
    const std::optional<Conference> client = raw ? clientHost(*raw) : std::nullopt;
    if (client) return Page{area, *client};
  }
  return std::nullopt;
}

// The scans of one look: those of the tick where they serve, else new ones until the deadline.
struct Scanner {
  const TakenScans& taken;
  double deadline;  // uptime seconds

  [[nodiscard]] Evidence operator()(const ScanRequest& request) const {
    if (const Evidence* evidence = completeScan(taken, request)) return *evidence;
    return labels(request.root, request.browser, request.nativeZoomWindow,
                  request.nativeZoomPreviewRecovery, deadline);
  }
};

// Of several views the one that says most: the first in a call, else in a lobby, else the first.
Evidence mostTelling(const std::vector<Element>& areas, const std::string& provider,
                     const Scanner& scan) {
  std::vector<Evidence> scans;
  for (const Element& area : areas) {
    scans.push_back(scan({.root = area, .browser = true}));
    if (scans.back().state(provider) == CallState::joined) return scans.back();
  }
  const auto lobby = std::ranges::find_if(scans, [&](const Evidence& evidence) {
    return evidence.complete && meetingLobby(evidence.controls, provider);
  });
  return lobby != scans.end() ? *lobby : scans.front();
}

// A native client that is a web view shows its meeting in a page; its window's own labels would
// hide a page whose title names a chat.
Evidence nativeEvidence(const Element& window, std::string_view bundle, const std::string& provider,
                        const Scanner& scan) {
  if (webClientApplication(bundle)) {
    const std::vector<Element> areas = webAreas(window, scan.deadline).roots;
    if (!areas.empty()) return mostTelling(areas, provider, scan);
  }
  const std::string title = textIn(readBefore(scan.deadline, window, attributes::title));
  return scan({window, false, nativeZoomMeetingTitle(title), provider == "zoom"});
}

// The key of a native client: of its process, or of its lobby while it shows one.
std::string nativeKey(ClientActivityMemory& memory, const std::string& provider, std::int32_t pid,
                      const Element& root, bool lobby) {
  if (!lobby) {
    memory.lobbyRoots.erase(pid);
    return provider + ":pid-" + std::to_string(pid);
  }
  const auto known = memory.lobbyRoots.find(pid);
  if (known != memory.lobbyRoots.end() && known->second.root == root) return known->second.key;
  std::string key = provider + ":lobby-" + platform::randomUUID();
  memory.lobbyRoots.insert_or_assign(pid, LobbyRoot{root, key});
  return key;
}

void stop(WriterGates& gates, std::string_view stage,
          const std::optional<std::string>& provider = std::nullopt,
          const std::optional<Evidence>& evidence = std::nullopt) {
  emitClientScan(gates, serializedClientScan(stage, provider, evidence));
}

}  // namespace

void reportClientActivity(ClientActivityMemory& memory, WriterGates& gates, const TakenScans& taken,
                          bool trusted) {
  if (!trusted) return stop(gates, "untrusted");
  const std::optional<platform::Application> front = platform::frontmostApplication();
  const std::string bundle = front ? front->bundleIdentifier.value_or("") : "";
  const bool browser = browserApplication(bundle);
  const std::optional<std::string> native = nativeProvider(bundle);
  if (!front || (!browser && !native)) return stop(gates, "no-front-provider");

  const Element application = platform::applicationElement(front->pid, messageTimeout);
  const platform::Reading focused = platform::readAttribute(application, attributes::focusedWindow);
  const auto* window = valueIn<Element>(focused);
  if (window == nullptr) return stop(gates, "no-focused-window", native);

  const Scanner scan{taken, platform::systemUptime() + clientLookSeconds};
  Client client;
  if (browser) {
    const std::optional<Page> page = meetingPage(*window, scan.deadline);
    if (!page) return stop(gates, "no-provider-surface");
    client = {page->client.provider, page->client.key, scan({.root = page->area, .browser = true})};
  } else {
    client = {*native, "", nativeEvidence(*window, bundle, *native, scan)};
  }
  const Evidence& evidence = client.evidence;
  if (!evidence.complete) return stop(gates, "incomplete", client.provider, evidence);

  const bool media =
      evidence.state(client.provider) == CallState::joined && mediaActive(evidence.controls);
  const bool lobby = meetingLobby(evidence.controls, client.provider);
  if (!browser) client.key = nativeKey(memory, client.provider, front->pid, *window, lobby);
  emitClientScan(gates, serializedClientScan("complete", client.provider, evidence));
  emitClient(gates, client.provider, client.key, front->pid, front->bundleIdentifier, media, lobby);
}

}  // namespace callmonitor
