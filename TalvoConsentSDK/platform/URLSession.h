#pragma once

// The seam for HTTP: run one request, report once. Nothing above it retries or queues.

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/platform/Cancellation.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Orders header names, ignoring ASCII case.
struct HeaderNameLess {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept;
};

using HTTPHeaders = std::map<std::string, std::string, HeaderNameLess>;

/// One request. `method` is "GET", "POST", "PUT" or "HEAD".
struct URLRequest {
  explicit URLRequest(URL requestUrl) : url(std::move(requestUrl)) {}

  URL url;
  std::string method = "GET";
  HTTPHeaders headers;
  std::optional<std::string> body;
  std::chrono::milliseconds timeout{60'000};  // limits the time without progress, not the whole transfer
  std::optional<std::chrono::milliseconds> totalTimeout;  // limits the time from `run` to the report
  std::shared_ptr<Cancellation> cancellation;             // null: nobody cancels the request
  bool isPersonal = false;  // the reply is about one person, so no cache may keep it
};

/// Where a reply came from.
enum class ReplySource {
  network,
  cache,           // kept from an earlier request; the service was not asked
  validatedCache,  // kept from an earlier request; the service confirmed that it is current
};

struct URLResponse {
  URLResponse() {}

  std::optional<int> statusCode;    // absent: not an HTTP response
  std::optional<std::string> body;  // absent for HEAD, 204 and 304; otherwise present, possibly empty
  HTTPHeaders headers;              // the values of repeated headers are joined with ", "
  std::optional<URL> url;           // the URL that answered, after redirects; absent: unknown
  ReplySource source = ReplySource::network;
};

/// Runs requests. Implementations are safe to call from any thread.
class URLSession {
 public:
  using Completion = std::function<void(Result<URLResponse>)>;

  virtual ~URLSession() = default;

  /// Sends `request`, follows redirects, and calls `completion` exactly once, on the session's own thread:
  /// with a response, whatever its status, or with the error that prevented one. Returns at once; throws only
  /// if it will not call `completion`. Once the process has begun to exit, the session need not call
  /// completions any more.
  ///
  /// Once the request's cancellation is cancelled, the session stops the request as soon as it can and
  /// reports `cancelledError()`, unless it has reported already or is about to.
  virtual void run(URLRequest request, Completion completion) = 0;
};

/// The report of a request that was cancelled: a `PlatformError` of domain "URLSession" and code -1.
TALVO_EXPORT PlatformError cancelledError();

/// Runs a request on a session, which may be the host's own. Calls `completion` at most once: with the
/// session's first report, or with the exception if `run` throws before it has reported.
TALVO_EXPORT void runOnce(URLSession& session, URLRequest request, URLSession::Completion completion);

}  // namespace platform
}  // namespace TalvoConsentSDK
