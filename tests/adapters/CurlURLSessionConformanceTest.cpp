// The libcurl session and the example's own under the conformance suite, against a real server.

#include "adapters/curl/CurlURLSession.h"

#include "examples/own-platform/OwnSession.h"
#include "testing/LoopbackBackend.h"
#include "testing/URLSessionConformance.h"

namespace TalvoConsentSDK {
namespace {

// Speaks HTTP/2 with the server.
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

using Backends = ::testing::Types<LoopbackBackend<CurlURLSession>,
                                  LoopbackBackend<SecureCurlURLSession, &SecureCurlURLSession::identity>,
                                  LoopbackBackend<own::OwnSession>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Loopback, URLSessionConformance, Backends);

}  // namespace
}  // namespace TalvoConsentSDK
