#pragma once

// Runs requests in tests, and collects what the session reports.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

inline platform::URLRequest makeRequest(std::string method, const std::string& url) {
  platform::URLRequest request(URL::parse(url).value());
  request.method = std::move(method);
  return request;
}

inline platform::URLRequest makeCancellable(std::string method, const std::string& url) {
  platform::URLRequest request = makeRequest(std::move(method), url);
  request.cancellation = std::make_shared<platform::Cancellation>();
  return request;
}

/// Collects the outcomes that its completions receive. All copies of an object share the outcomes.
class Outcomes {
 public:
  using Value = std::pair<Result<platform::URLResponse>, std::thread::id>;  // and the thread that reported it

  /// `then` runs inside the completion.
  platform::URLSession::Completion completion(std::function<void()> then = [] {}) {
    return [shared = shared_, then = std::move(then)](Result<platform::URLResponse> outcome) {
      {
        const std::scoped_lock guard(shared->lock);
        shared->values.emplace_back(std::move(outcome), std::this_thread::get_id());
        shared->changed.notify_all();
      }
      then();
    };
  }

  /// Waits until there are at least `count` outcomes and returns all of them. Throws after 30 seconds.
  std::vector<Value> wait(std::size_t count) const {
    std::unique_lock guard(shared_->lock);
    if (!shared_->changed.wait_for(guard, std::chrono::seconds(30),
                                   [&] { return shared_->values.size() >= count; })) {
      throw std::runtime_error("A completion was not called");
    }
    return shared_->values;
  }

 private:
  struct Shared {
    std::mutex lock;
    std::condition_variable changed;
    std::vector<Value> values;
  };

  std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

/// Runs one request and waits for its outcome. Throws after 30 seconds.
inline Result<platform::URLResponse> await(platform::URLSession& session, platform::URLRequest request) {
  Outcomes outcomes;
  session.run(std::move(request), outcomes.completion());
  return outcomes.wait(1).front().first;
}

/// Whether a request ended because it was cancelled.
inline bool isCancelled(const Result<platform::URLResponse>& outcome) {
  const auto* error = outcome ? nullptr : outcome.error().as<PlatformError>();
  const PlatformError cancelled = platform::cancelledError();
  return error && error->domain() == cancelled.domain() && error->code() == cancelled.code();
}

}  // namespace TalvoConsentSDK
