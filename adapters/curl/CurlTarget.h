#pragma once

// Where a request goes.

#include <memory>
#include <optional>
#include <string>

struct Curl_URL;

namespace TalvoConsentSDK {

/// A URL as parsed by libcurl, so that the checked host is the host that libcurl contacts.
struct CurlTarget {
  struct Deleter {
    void operator()(Curl_URL* parsed) const noexcept;
  };
  std::unique_ptr<Curl_URL, Deleter> url;
  std::string scheme, host;

  static std::optional<CurlTarget> parse(const char* url);

  /// Returns a part of the URL; `name` is a `CURLUPart`. An absent port is the scheme's port.
  std::string part(int name) const;

  /// The host and the port.
  std::string origin() const;

  bool isLoopback() const;
  bool sharesOrigin(const CurlTarget& other) const;
};

/// Compares two texts, ignoring ASCII case.
bool sameText(const std::string& a, const std::string& b);

}  // namespace TalvoConsentSDK
