#pragma once

// How both clients address the consent service.

#include <optional>
#include <string>

#include "TalvoConsentSDK/platform/URL.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

/// `baseUrl` without one trailing slash, then "/public", then `path`; nothing when that is no URL that a
/// request can be sent to. The pieces are joined as they are, without escaping.
std::optional<URL> endpointURL(const std::string& baseUrl, const std::string& path);

/// The headers of every request.
HTTPHeaders endpointHeaders();

}  // namespace TalvoConsentSDK
