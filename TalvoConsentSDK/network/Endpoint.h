#pragma once

// How both clients address the consent service.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

/// `baseUrl` without one trailing slash, then "/public", then `path`; nothing when that is no URL that a
/// request can be sent to. The pieces are joined as they are, without escaping.
std::optional<URL> endpointURL(const std::string& baseUrl, const std::string& path);

/// Whether `text`, joined to a path as it is, is one segment that names nothing else: it is not empty, is no
/// dot segment, and holds no '/', '?' or '#', also when they are percent-encoded.
bool isOneSegment(std::string_view text);

/// The headers of every request.
platform::HTTPHeaders endpointHeaders();

}  // namespace TalvoConsentSDK
