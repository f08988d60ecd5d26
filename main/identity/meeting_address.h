// The tests that every address of a meeting provider has to pass, and the providers' hosts.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "text/url_components.h"

namespace callmonitor {

inline constexpr std::string_view MeetHost = "meet.google.com";
inline constexpr std::string_view ZoomWebDomain = "zoom.us";
inline constexpr std::string_view ZoomAltDomain = "zoom.com";
inline constexpr std::string_view TeamsWorkHost = "teams.microsoft.com";
inline constexpr std::string_view TeamsLiveHost = "teams.live.com";
inline constexpr std::string_view TeamsCloudHost = "teams.cloud.microsoft";
inline constexpr std::array<std::string_view, 3> TeamsHostList{TeamsWorkHost, TeamsLiveHost,
                                                               TeamsCloudHost};

// No user part and no password, not even empty ones, and no port but 443: what else an address
// carries could make it look like a provider's without being one.
[[nodiscard]] bool plainAuthority(const UrlComponents& url);

// The lower-cased host of a secure address with a plain authority. Absent for any other scheme, a
// missing host, a user part or a foreign port.
[[nodiscard]] std::optional<std::string> secureHost(const UrlComponents& url);

// The provider whose web client a lower-cased host serves: "meet", "zoom" (either domain, and every
// sub-domain of it) or "teams". Absent for every other host.
[[nodiscard]] std::optional<std::string> providerOfHost(std::string_view host);

}  // namespace callmonitor
