#pragma once

// Reads header fields: lists, quoted strings, numbers of seconds, and the directives of Cache-Control. Input
// that cannot be parsed never makes a reply usable for longer. Not installed.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

/// The value of a field without white space around it; nothing if the field is absent.
std::optional<std::string_view> fieldValue(const platform::HTTPHeaders& headers, std::string_view name);

/// The members of a list, trimmed, without empty ones. A comma within a quoted string does not separate, but
/// if the closing quote is missing, it does.
std::vector<std::string_view> listMembers(std::string_view value);

/// A number of seconds with any number of digits. Values of more than 2^31 become 2^31 (RFC 9111,
/// section 1.2.2). Nothing if the text is not a number.
std::optional<std::chrono::seconds> deltaSeconds(std::string_view text);

/// What a reply says about keeping it (RFC 9111, section 5.2.2; RFC 5861, section 4).
struct CacheControl {
  explicit CacheControl(const platform::HTTPHeaders& headers);

  bool noStore = false;
  bool noCache = false;  // also if it names fields
  bool mustRevalidate = false;
  std::optional<std::chrono::seconds> maxAge;  // 0 if it is invalid, or given twice with different values
  std::optional<std::chrono::seconds> staleIfError;  // absent if it is invalid
};

/// Whether a reply of this type may answer a request that sent this Accept field. Without an Accept field,
/// everything is accepted.
bool acceptsType(std::optional<std::string_view> accept, std::string_view contentType);

/// A media type in lower case, without parameters.
std::string mediaType(std::string_view contentType);

}  // namespace TalvoConsentSDK
