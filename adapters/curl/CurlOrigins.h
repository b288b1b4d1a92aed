#pragma once

// The origins for whose connections no request waits.

#include <cstddef>
#include <set>
#include <string>

namespace TalvoConsentSDK {

/// Remembers which origins chose HTTP/1.1 in their latest TLS handshake, or have since let a request time out
/// before it had a connection. A request to another origin waits for a connection that is being opened,
/// because it can probably share it. With HTTP/1.1, or if the handshake hangs, the wait would be in vain.
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
