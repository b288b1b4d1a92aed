#include "testing/fakes/FakeURLSession.h"

namespace TalvoConsentSDK {

using namespace platform;

FakeURLSession::FakeURLSession(std::shared_ptr<Executor> thread) : thread_(std::move(thread)) {}

void FakeURLSession::run(URLRequest request, Completion completion) {
  auto reported = outcome(request);
  const auto cancellation = request.cancellation;
  if (reported) {
    thread_->post([completion = std::move(completion), reported = *std::move(reported), cancellation] {
      const bool isCancelled = cancellation && cancellation->isCancelled();
      completion(isCancelled ? Result<URLResponse>(cancelledError()) : reported);
    });
    return;
  }
  // The cancellation must not own the completion, which may own the cancellation.
  const auto waiting = std::make_shared<Completion>(std::move(completion));
  {
    const std::scoped_lock guard(lock_);
    waiting_.push_back(waiting);
  }
  if (!cancellation) return;
  cancellation->observe([thread = thread_, weak = std::weak_ptr<Completion>(waiting)] {
    if (const auto cancelled = weak.lock())
      thread->post([taken = std::move(*cancelled)] { taken(cancelledError()); });
  });
}

void FakeURLSession::answer(const std::string& method, const std::string& url, Result<URLResponse> outcome) {
  const std::scoped_lock guard(lock_);
  answers_[method + " " + url].push_back(std::move(outcome));
}

void FakeURLSession::answer(const std::string& method, const std::string& url, int statusCode,
                            std::string body) {
  URLResponse response;
  response.statusCode = statusCode;
  response.body = std::move(body);
  answer(method, url, std::move(response));
}

void FakeURLSession::stall(const std::string& method, const std::string& url) {
  const std::scoped_lock guard(lock_);
  stalled_.insert(method + " " + url);
}

std::vector<URLRequest> FakeURLSession::requests() const {
  const std::scoped_lock guard(lock_);
  return requests_;
}

std::vector<std::string> FakeURLSession::unexpected() const {
  const std::scoped_lock guard(lock_);
  return unexpected_;
}

// Returns nothing if the request is not answered.
std::optional<Result<URLResponse>> FakeURLSession::outcome(const URLRequest& request) {
  const std::scoped_lock guard(lock_);
  requests_.push_back(request);
  const std::string name = request.method + " " + request.url.text();
  if (stalled_.contains(name)) {
    if (!request.totalTimeout && request.timeout >= std::chrono::seconds(1)) return std::nullopt;
    return PlatformError("FakeURLSession", -2, "The request took too long");
  }
  const auto prepared = answers_.find(name);
  if (prepared == answers_.end()) {
    unexpected_.push_back(name);
    return PlatformError("FakeURLSession", -1, "Unexpected request: " + name);
  }
  auto& outcomes = prepared->second;
  Result<URLResponse> next = outcomes.front();
  if (outcomes.size() > 1) outcomes.pop_front();
  if (next && !next->url) next->url = request.url;
  return next;
}

}  // namespace TalvoConsentSDK
