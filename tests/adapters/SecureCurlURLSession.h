#pragma once

#include "adapters/curl/CurlURLSession.h"

#include "testing/LoopbackServer.h"

namespace TalvoConsentSDK {

/// Trusts servers with its identity, and uses HTTP/2 if they support it.
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
