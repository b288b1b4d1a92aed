#pragma once

// URLs and headers of the requests to the consent service.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

/// Drops one trailing slash from `baseUrl` and appends "/public" and `path` without escaping them. Returns
/// nothing if the result is not a URL that a request can be sent to.
std::optional<URL> endpointURL(const std::string& baseUrl, const std::string& path);

/// Whether `text` is a single path segment when it is joined to a path without escaping: it is not empty, is
/// not a dot segment, and contains no '/', '?' or '#', percent-encoded or not.
bool isOneSegment(std::string_view text);

/// The headers of every request.
const platform::HTTPHeaders& endpointHeaders();

}  // namespace TalvoConsentSDK
