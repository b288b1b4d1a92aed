#pragma once

#include "adapters/curl/CurlURLSession.h"

#include "testing/LoopbackServer.h"

namespace TalvoConsentSDK {

/// Trusts servers that have its identity, and speaks HTTP/2 with them where they do.
class SecureCurlURLSession : public CurlURLSession {
 public:
  SecureCurlURLSession() : CurlURLSession(options()) {}

  static const TestCertificate* identity() {
    static const TestCertificate certificate("localhost");
    return &certificate;
  }

 private:
  static CurlOptions options() {
    CurlOptions options;
    options.certificates = identity()->certificate();
    return options;
  }
};

}  // namespace TalvoConsentSDK
