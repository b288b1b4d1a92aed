#pragma once

// The origins that do not support HTTP/2.

#include <cstddef>
#include <set>
#include <string>

namespace TalvoConsentSDK {

/// Remembers which origins chose HTTP/1.1 in their latest TLS handshake. A request to such an origin need not
/// wait for a connection that is being opened, because it cannot share one. Other requests wait.
class CurlOrigins {
 public:
  void note(const std::string& origin, bool usesHTTP2) {
    if (usesHTTP2) {
      withoutHTTP2_.erase(origin);
    } else {
      if (withoutHTTP2_.size() >= maxCount) withoutHTTP2_.clear();
      withoutHTTP2_.insert(origin);
    }
  }

  bool mayShare(const std::string& origin) const { return !withoutHTTP2_.contains(origin); }

 private:
  static constexpr std::size_t maxCount = 64;

  std::set<std::string> withoutHTTP2_;
};

}  // namespace TalvoConsentSDK
