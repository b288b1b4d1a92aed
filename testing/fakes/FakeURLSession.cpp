#include "testing/fakes/FakeURLSession.h"

namespace TalvoConsentSDK {

using namespace platform;

FakeURLSession::FakeURLSession(std::shared_ptr<Executor> thread) : thread_(std::move(thread)) {}

void FakeURLSession::run(URLRequest request, Completion completion) {
  auto reported = outcome(request);
  thread_->post(
      [completion = std::move(completion), reported = std::move(reported)] { completion(reported); });
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

std::vector<URLRequest> FakeURLSession::requests() const {
  const std::scoped_lock guard(lock_);
  return requests_;
}

std::vector<std::string> FakeURLSession::unexpected() const {
  const std::scoped_lock guard(lock_);
  return unexpected_;
}

Result<URLResponse> FakeURLSession::outcome(const URLRequest& request) {
  const std::scoped_lock guard(lock_);
  requests_.push_back(request);
  const std::string name = request.method + " " + request.url.text();
  const auto prepared = answers_.find(name);
  if (prepared == answers_.end()) {
    unexpected_.push_back(name);
    return PlatformError("FakeURLSession", -1, "Unexpected request: " + name);
  }
  auto& outcomes = prepared->second;
  Result<URLResponse> next = outcomes.front();
  if (outcomes.size() > 1) outcomes.pop_front();
  return next;
}

}  // namespace TalvoConsentSDK
