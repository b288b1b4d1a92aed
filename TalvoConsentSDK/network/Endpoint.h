#pragma once

// URLs and headers with which both clients address the consent service.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

/// Joins `baseUrl` without its trailing slash, if it has one, "/public" and `path`, without escaping. Returns
/// nothing if the result is not a URL that a request can be sent to.
std::optional<URL> endpointURL(const std::string& baseUrl, const std::string& path);

/// Whether `text` is a single path segment when it is joined to a path without escaping: it is not empty, is
/// not a dot segment, and contains no '/', '?' or '#', percent-encoded or not.
bool isOneSegment(std::string_view text);

/// The headers of every request.
platform::HTTPHeaders endpointHeaders();

}  // namespace TalvoConsentSDK
