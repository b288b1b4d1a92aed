#pragma once

#include "adapters/curl/CurlURLSession.h"

#include "testing/LoopbackServer.h"

namespace TalvoConsentSDK {

/// A libcurl session that trusts servers with the certificate `identity()`. Uses HTTP/2 if they support it.
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
