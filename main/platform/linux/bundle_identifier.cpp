// The table and the order in which facts are asked. Reading the facts is in identity_facts.cpp.
#include "platform/linux/bundle_identifier.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace callmonitor::platform {
namespace {

enum class Kind { executable, desktopFile, flatpak, snap };

struct Row {
  Kind kind;
  std::string_view name;
  std::string_view bundle;
};

constexpr std::string_view chrome = "com.google.Chrome";
constexpr std::string_view edge = "com.microsoft.edgemac";
constexpr std::string_view zoom = "us.zoom.xos";
constexpr std::string_view teams = "com.microsoft.teams2";
constexpr std::string_view webex = "com.cisco.webexmeetingsapp";

constexpr std::array rows{
    Row{Kind::executable, "chrome", chrome},
    Row{Kind::executable, "google-chrome", chrome},
    Row{Kind::executable, "chromium", chrome},
    Row{Kind::executable, "chromium-browser", chrome},
    Row{Kind::executable, "msedge", edge},
    Row{Kind::executable, "microsoft-edge", edge},
    Row{Kind::executable, "zoom", zoom},
    Row{Kind::executable, "teams", teams},
    Row{Kind::executable, "teams-for-linux", teams},
    Row{Kind::executable, "CiscoCollabHost", webex},
    Row{Kind::executable, "webex", webex},

    Row{Kind::desktopFile, "google-chrome", chrome},
    Row{Kind::desktopFile, "google-chrome-beta", chrome},
    Row{Kind::desktopFile, "google-chrome-unstable", chrome},
    Row{Kind::desktopFile, "com.google.Chrome", chrome},
    Row{Kind::desktopFile, "chromium", chrome},
    Row{Kind::desktopFile, "chromium-browser", chrome},
    Row{Kind::desktopFile, "org.chromium.Chromium", chrome},
    Row{Kind::desktopFile, "microsoft-edge", edge},
    Row{Kind::desktopFile, "microsoft-edge-beta", edge},
    Row{Kind::desktopFile, "microsoft-edge-dev", edge},
    Row{Kind::desktopFile, "com.microsoft.Edge", edge},
    Row{Kind::desktopFile, "Zoom", zoom},
    Row{Kind::desktopFile, "us.zoom.Zoom", zoom},
    Row{Kind::desktopFile, "teams", teams},
    Row{Kind::desktopFile, "teams-for-linux", teams},
    Row{Kind::desktopFile, "webex", webex},

    Row{Kind::flatpak, "com.google.Chrome", chrome},
    Row{Kind::flatpak, "com.google.ChromeDev", chrome},
    Row{Kind::flatpak, "org.chromium.Chromium", chrome},
    Row{Kind::flatpak, "io.github.ungoogled_software.ungoogled_chromium", chrome},
    Row{Kind::flatpak, "com.microsoft.Edge", edge},
    Row{Kind::flatpak, "com.microsoft.EdgeDev", edge},
    Row{Kind::flatpak, "us.zoom.Zoom", zoom},
    Row{Kind::flatpak, "com.microsoft.Teams", teams},
    Row{Kind::flatpak, "com.github.IsmaelMartinez.teams_for_linux", teams},

    Row{Kind::snap, "chromium", chrome},
    Row{Kind::snap, "zoom-client", zoom},
    Row{Kind::snap, "teams", teams},
    Row{Kind::snap, "teams-for-linux", teams},
};

std::string_view fileName(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view withoutSuffix(std::string_view text, std::string_view suffix) {
  if (text.ends_with(suffix)) text.remove_suffix(suffix.size());
  return text;
}

// Empty when the table does not list the name.
std::string_view listed(Kind kind, std::string_view name) {
  for (const Row& row : rows) {
    if (row.kind == kind && row.name == name) return row.bundle;
  }
  return {};
}

}  // namespace

std::optional<std::string> bundleIdentifier(const IdentityFacts& facts) {
  // A package keeps its own name even where it ships an executable that is called like a browser.
  if (!facts.flatpak.empty()) {
    const std::string_view bundle = listed(Kind::flatpak, facts.flatpak);
    return std::string(bundle.empty() ? std::string_view(facts.flatpak) : bundle);
  }
  if (!facts.snap.empty()) {
    const std::string_view bundle = listed(Kind::snap, facts.snap);
    return std::string(bundle.empty() ? std::string_view(facts.snap) : bundle);
  }
  // The kernel marks the file of a program that was upgraded while it runs.
  const std::string_view path = withoutSuffix(facts.executable, " (deleted)");
  const std::string_view program = fileName(path.empty() ? std::string_view(facts.command) : path);
  const std::string_view desktopFile = withoutSuffix(fileName(facts.desktopFile), ".desktop");
  if (const std::string_view bundle = listed(Kind::executable, program); !bundle.empty()) {
    return std::string(bundle);
  }
  if (const std::string_view bundle = listed(Kind::desktopFile, desktopFile); !bundle.empty()) {
    return std::string(bundle);
  }
  if (!desktopFile.empty()) return std::string(desktopFile);
  if (!program.empty()) return std::string(program);
  return std::nullopt;
}

}  // namespace callmonitor::platform
