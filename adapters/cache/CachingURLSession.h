#pragma once

// A private HTTP cache in front of any session (RFC 9111, and stale-if-error of RFC 5861).

#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/CacheStorage.h"
#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/URLSession.h"

#include "adapters/cache/CacheClock.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps replies as far as their headers allow, and answers with them. A fresh reply is used without asking
/// the service. Any other reply is first confirmed by the service, by its ETag or Last-Modified. A stale
/// reply is used only if the service cannot be reached, or answers with status 500, 502, 503 or 504, and the
/// reply allows that by stale-if-error.
///
/// Keeps only complete replies with status 200 to a GET, and only if
/// - the request is not personal (`URLRequest::isPersonal`), names no user by Authorization, Cookie or in its
///   URL, and has no Range or condition of its own;
/// - `URLResponse::url` is the requested URL, so that no redirect led to the reply;
/// - the reply has a Content-Type that the request accepts. Without an Accept field, that is every type
///   except HTML, because the login page of a network may take the place of any reply over plain http;
/// - the reply has a lifetime (max-age or Expires), stale-if-error, an ETag or Last-Modified. It guesses no
///   lifetime.
/// It keeps one reply for each URL. Requests whose replies may not be kept go to the inner session unchanged.
/// A successful POST or PUT removes what was kept for its URL. A reply that another process requested just
/// before may stay.
///
/// Vary is compared with the fields of `URLRequest::headers`. Accept-Encoding always matches, because
/// sessions decode what they receive.
class CachingURLSession : public platform::URLSession {
 public:
  /// `storage` is used on `executor` only. `executor` must run its jobs one after another, in the order
  /// posted, on a thread that may wait for the disk: a `BackgroundThread` of its own.
  CachingURLSession(std::shared_ptr<platform::URLSession> inner,
                    std::shared_ptr<platform::CacheStorage> storage,
                    std::shared_ptr<platform::Executor> executor,
                    std::shared_ptr<CacheClock> clock = std::make_shared<CacheClock>());
  ~CachingURLSession() override;

  /// Calls `completion` on `executor` if the reply was kept, and otherwise on the inner session's thread. A
  /// completion that blocks delays the others on its thread. A request that is cancelled while it waits for
  /// the storage is not sent, and this time counts for its `totalTimeout`. If a kept reply may take the place
  /// of an error, the inner session has seven eighths of the time that is left, so that the reply is in time.
  void run(platform::URLRequest request, Completion completion) override;

 private:
  class Cache;

  const std::shared_ptr<platform::URLSession> inner_;
  const std::shared_ptr<Cache> cache_;
};

}  // namespace TalvoConsentSDK
