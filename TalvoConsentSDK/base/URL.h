#pragma once

// A URL that has been checked against RFC 3986.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// An absolute URL, kept as the text it was parsed from.
class URL {
 public:
  /// Parses `text` according to RFC 3986. Returns nothing if it has no scheme, or contains spaces, non-ASCII
  /// characters, bare per cent signs or the like. Nothing is escaped or normalised.
  static std::optional<URL> parse(std::string_view text);

  const std::string& text() const noexcept { return text_; }

  /// The scheme in lower case.
  const std::string& scheme() const noexcept { return scheme_; }

  /// The host as written, without brackets; empty if there is none.
  const std::string& host() const noexcept { return host_; }

  /// Whether a request can be sent to it: it names a host, and its port, if it has one, is at most 65535.
  bool isRequestable() const noexcept { return requestable_; }

  friend bool operator==(const URL& a, const URL& b) noexcept { return a.text_ == b.text_; }

 private:
  URL() = default;

  std::string text_;
  std::string scheme_;
  std::string host_;
  bool requestable_ = false;
};

}  // namespace TalvoConsentSDK
