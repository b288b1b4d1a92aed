#pragma once

// URLs as a cache compares them. Not installed.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/URL.h"

namespace TalvoConsentSDK {

/// The key under which a cache keeps replies for a URL: the URL without its fragment, with scheme and host in
/// lower case, and without a port that the scheme implies.
std::string cacheKey(const URL& url);

/// Scheme, host and port of a URL, as `cacheKey` writes them.
std::string originOf(const URL& url);

/// Whether the URL names a user or holds a password.
bool hasUserInfo(const URL& url);

/// The URL that a reference in a reply to `base` names, such as the value of Location (RFC 3986, section 5);
/// nothing if it is not a valid URL.
std::optional<URL> resolved(const URL& base, std::string_view reference);

}  // namespace TalvoConsentSDK
