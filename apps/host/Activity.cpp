#include "apps/host/Activity.h"

#include <utility>

namespace TalvoConsentHost {

namespace {

using Counter = std::shared_ptr<std::atomic<int>>;
using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;

// Increments the counter for as long as any copy of the result exists.
std::shared_ptr<void> counted(const Counter& counter) {
  ++*counter;
  return {nullptr, [counter](void*) { --*counter; }};
}

class CountingExecutor : public Executor {
 public:
  CountingExecutor(std::shared_ptr<Executor> inner, Counter counter)
      : inner_(std::move(inner)), counter_(std::move(counter)) {}

  void post(std::function<void()> job) override {
    inner_->post([job = std::move(job), token = counted(counter_)] { job(); });
  }

 private:
  const std::shared_ptr<Executor> inner_;
  const Counter counter_;
};

class CountingSession : public URLSession {
 public:
  CountingSession(std::shared_ptr<URLSession> inner, Counter counter)
      : inner_(std::move(inner)), counter_(std::move(counter)) {}

  void run(URLRequest request, Completion completion) override {
    inner_->run(std::move(request), [completion = std::move(completion), token = counted(counter_)](
                                        Result<URLResponse> outcome) { completion(std::move(outcome)); });
  }

 private:
  const std::shared_ptr<URLSession> inner_;
  const Counter counter_;
};

}  // namespace

void Activity::watch(Platform& platform) {
  platform.mainActor = std::make_shared<CountingExecutor>(platform.mainActor, count_);
  platform.background = std::make_shared<CountingExecutor>(platform.background, count_);
  platform.callbacks = std::make_shared<CountingExecutor>(platform.callbacks, count_);
  platform.urlSession = std::make_shared<CountingSession>(platform.urlSession, count_);
}

}  // namespace TalvoConsentHost
