#pragma once

// The seam for HTTP: run one request, report once. Nothing above it retries, caches or queues.

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/base/URL.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Orders header names without regard to ASCII case.
struct HeaderNameLess {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const noexcept;
};

/// Header names and their values.
using HTTPHeaders = std::map<std::string, std::string, HeaderNameLess>;

/// One request. `method` is "GET", "POST", "PUT" or "HEAD".
struct URLRequest {
  explicit URLRequest(URL requestUrl) : url(std::move(requestUrl)) {}

  URL url;
  std::string method = "GET";
  HTTPHeaders headers;
  std::optional<std::string> body;
  std::chrono::milliseconds timeout{60'000};  // without progress; not the whole transfer
};

/// What came back.
struct URLResponse {
  URLResponse() {}

  std::optional<int> statusCode;    // absent: not an HTTP response
  std::optional<std::string> body;  // absent for HEAD, 204 and 304; otherwise present, possibly empty
};

/// Runs requests. Implementations are safe to call from any thread.
class URLSession {
 public:
  using Completion = std::function<void(Result<URLResponse>)>;

  virtual ~URLSession() = default;

  /// Sends `request` and calls `completion` exactly once, on the session's own thread: with a response,
  /// whatever its status, or with the error that kept one from arriving. Redirects have been followed.
  /// Returns at once; throws only when it will not call. Once the process has begun to exit, completions may
  /// no longer be called.
  virtual void run(URLRequest request, Completion completion) = 0;
};

/// Runs a request on a session that may be a host's own. `completion` is called at most once: what a session
/// reports later does not count, and what its `run` throws before a report is the report.
TALVO_EXPORT void runOnce(URLSession& session, URLRequest request, URLSession::Completion completion);

}  // namespace platform
}  // namespace TalvoConsentSDK
