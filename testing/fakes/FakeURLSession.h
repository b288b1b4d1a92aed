#pragma once

// A URL session that answers with prepared outcomes.

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Answers each expected request with the outcomes prepared for it, in turn, and repeats the last one. A
/// request without a prepared outcome fails and is listed as unexpected. A response without a URL gets the
/// request's. A request that is cancelled before its outcome is reported ends as cancelled.
class FakeURLSession : public platform::URLSession {
 public:
  /// Reports outcomes on `thread`, which stands for a session's own thread.
  explicit FakeURLSession(std::shared_ptr<platform::Executor> thread);

  void run(platform::URLRequest request, Completion completion) override;

  /// Adds an outcome for requests with this method and URL.
  void answer(const std::string& method, const std::string& url, Result<platform::URLResponse> outcome);
  void answer(const std::string& method, const std::string& url, int statusCode, std::string body);

  /// From now on, does not answer requests with this method and URL: they end when they are cancelled. If
  /// they have a `totalTimeout`, or a `timeout` below a second, they fail at once, as if this time had
  /// passed.
  void stall(const std::string& method, const std::string& url);

  /// All requests so far, in order. Their cancellations show which of them were cancelled.
  std::vector<platform::URLRequest> requests() const;

  /// "METHOD URL" of each request without a prepared outcome.
  std::vector<std::string> unexpected() const;

 private:
  std::optional<Result<platform::URLResponse>> outcome(const platform::URLRequest& request);

  const std::shared_ptr<platform::Executor> thread_;
  mutable std::mutex lock_;
  std::map<std::string, std::deque<Result<platform::URLResponse>>> answers_;
  std::set<std::string> stalled_;
  std::vector<std::shared_ptr<Completion>> waiting_;  // of requests without an answer
  std::vector<platform::URLRequest> requests_;
  std::vector<std::string> unexpected_;
};

}  // namespace TalvoConsentSDK
