#include "doctor/classification.h"

#include "identity/applications.h"

namespace callmonitor::doctor {

std::string kindOf(const platform::Application& application,
                   const std::optional<std::vector<AudioProcess>>& audio) {
  const std::string bundle = application.bundleIdentifier.value_or("");
  if (const auto provider = nativeProvider(bundle)) return "native client " + *provider;
  if (standaloneBrowser(bundle)) return "web app";
  if (browserApplication(bundle)) return "browser";
  if (genericClient(bundle, application.regular, clientAudio(bundle, audio))) {
    return "generic candidate";
  }
  constexpr ClientAudio bothWays{true, true};
  if (!audio && genericClient(bundle, application.regular, bothWays)) {
    return "other (a generic candidate if it captures and plays, which is not known)";
  }
  return "other";
}

bool mayBeOpened(const platform::Application& application) {
  const std::string bundle = application.bundleIdentifier.value_or("");
  return application.regular || nativeProvider(bundle) || browserApplication(bundle);
}

}  // namespace callmonitor::doctor
