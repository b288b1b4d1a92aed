#pragma once

// The client for people's choices on numbered topics. It has no storage, no banner and no events.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

namespace platform {
class Executor;
}
class HTTPClient;

/// Submits choices on the topics of one collection point. One instance exists per process; it is never
/// destroyed. Install a Platform before anything is submitted. Safe from any thread.
class TalvoConsent {
 public:
  /// Called once, on the platform's callback executor, with the service's reply, an `HTTPClientError`, or a
  /// `PlatformError` of domain "HTTPClient".
  using Completion = std::function<void(Result<JSONObject>)>;

  /// Returns the process's instance, creating it on the first call; the arguments of later calls are ignored.
  /// `token` is sent in the request's body. Without `apiUrl`, the library's default service is used.
  /// `tenantId` is accepted for hosts that have one, but not used.
  static std::shared_ptr<TalvoConsent> getInstance(const std::string& tenantId,
                                                   const std::string& collectionPointId,
                                                   const std::optional<std::string>& token,
                                                   const std::optional<std::string>& apiUrl);

  /// Sends the choices (topic number to yes or no) of the person with this e-mail address, which is passed on
  /// unchanged. If the base URL is not a URL that a request can be sent to, fails with `HTTPClientError`
  /// `invalidURL`, calling `completion` on the calling thread before this returns. If a text is not UTF-8,
  /// fails with the `PlatformError` of code -1.
  void submitConsent(const std::string& userEmail, const std::map<std::int64_t, bool>& topics,
                     Completion completion);

 private:
  TalvoConsent(std::string collectionPointId, std::optional<std::string> token, std::string baseUrl);

  const std::string collectionPointId_;
  const std::optional<std::string> token_;
  const std::string baseUrl_;
  const std::shared_ptr<platform::Executor> callbacks_;
  const std::shared_ptr<HTTPClient> httpClient_;
};

}  // namespace TalvoConsentSDK
