#pragma once

// Dates in HTTP headers (RFC 9110, section 5.6.7). Not installed.

#include <chrono>
#include <optional>
#include <string_view>

namespace TalvoConsentSDK {

/// A point in time as HTTP knows it, in whole seconds.
using HTTPTime = std::chrono::sys_seconds;

/// Parses a date in one of HTTP's three formats; nothing if it is in none of them, or names no real day or
/// time. `now` decides the century of a year of two digits.
std::optional<HTTPTime> parseHTTPDate(std::string_view text, HTTPTime now);

}  // namespace TalvoConsentSDK
