// Runs the conformance suite on the libcurl session and the example's session, with a real server.

#include "examples/own-platform/OwnSession.h"
#include "testing/LoopbackBackend.h"
#include "testing/URLSessionConformance.h"
#include "tests/adapters/SecureCurlURLSession.h"

namespace TalvoConsentSDK {
namespace {

using Backends = ::testing::Types<LoopbackBackend<CurlURLSession>,
                                  LoopbackBackend<SecureCurlURLSession, &SecureCurlURLSession::identity>,
                                  LoopbackBackend<own::OwnSession>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Loopback, URLSessionConformance, Backends);

}  // namespace
}  // namespace TalvoConsentSDK
