// Runs the conformance suites with real servers: on the libcurl session, on this session behind the cache,
// and on the session of the example.

#include "adapters/cache/CachingURLSession.h"
#include "adapters/cache/MemoryCacheStorage.h"
#include "adapters/threads/BackgroundThread.h"

#include "examples/own-platform/OwnSession.h"
#include "testing/LoopbackBackend.h"
#include "testing/RedirectConformance.h"
#include "testing/URLSessionConformance.h"
#include "tests/adapters/CurlTest.h"

namespace TalvoConsentSDK {
namespace {

struct CachedCurlURLSession : CachingURLSession {
  CachedCurlURLSession()
      : CachingURLSession(std::make_shared<CurlURLSession>(), std::make_shared<MemoryCacheStorage>(),
                          std::make_shared<BackgroundThread>()) {}
};

using Backends = ::testing::Types<LoopbackBackend<CurlURLSession>,
                                  LoopbackBackend<SecureCurlURLSession, &SecureCurlURLSession::identity>,
                                  LoopbackBackend<CachedCurlURLSession>, LoopbackBackend<own::OwnSession>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Loopback, URLSessionConformance, Backends);

using FollowRedirects = ::testing::Types<CurlURLSession, CachedCurlURLSession>;
INSTANTIATE_TYPED_TEST_SUITE_P(Loopback, RedirectConformance, FollowRedirects);

}  // namespace
}  // namespace TalvoConsentSDK
