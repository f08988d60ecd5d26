#include "doctor/classification.h"

#include "identity/applications.h"

namespace callmonitor::doctor {
namespace {

// The sound by which an application becomes a candidate if anything can make it one.
constexpr ClientAudio bothWays{true, true};

}  // namespace

std::string kindOf(const platform::Application& application,
                   const std::optional<std::vector<AudioProcess>>& audio) {
  const std::string bundle = application.bundleIdentifier.value_or("");
  if (const auto provider = nativeProvider(bundle)) return "native client " + *provider;
  if (standaloneBrowser(bundle)) return "web app";
  if (browserApplication(bundle)) return "browser";
  if (genericClient(bundle, application.regular, clientAudio(bundle, audio))) {
    return "generic candidate";
  }
  if (!audio && genericClient(bundle, application.regular, bothWays)) {
    return "other (a generic candidate if it captures and plays, which is not known)";
  }
  return "other";
}

bool mayBeOpened(const platform::Application& application) {
  const std::string bundle = application.bundleIdentifier.value_or("");
  return nativeProvider(bundle) || browserApplication(bundle) ||
         genericClient(bundle, application.regular, bothWays);
}

}  // namespace callmonitor::doctor
