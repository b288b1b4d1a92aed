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
  CountingSession(std::shared_ptr<URLSession> inner, Counter counter, std::shared_ptr<LoadedReplies> loaded)
      : inner_(std::move(inner)), counter_(std::move(counter)), loaded_(std::move(loaded)) {}

  void run(URLRequest request, Completion completion) override {
    const std::string url = request.method == "GET" ? request.url.text() : "";
    inner_->run(std::move(request), [completion = std::move(completion), token = counted(counter_), url,
                                     loaded = loaded_](Result<URLResponse> outcome) {
      if (outcome && !url.empty()) loaded->add(url, outcome->source);
      completion(std::move(outcome));
    });
  }

 private:
  const std::shared_ptr<URLSession> inner_;
  const Counter counter_;
  const std::shared_ptr<LoadedReplies> loaded_;
};

}  // namespace

void LoadedReplies::add(std::string url, ReplySource source) {
  const char* const from = source == ReplySource::network ? "network"
                           : source == ReplySource::cache ? "cache"
                                                          : "revalidated";
  const std::scoped_lock guard(lock_);
  replies_.emplace_back(std::move(url), from);
}

std::vector<std::pair<std::string, std::string>> LoadedReplies::take() {
  const std::scoped_lock guard(lock_);
  return std::exchange(replies_, {});
}

void Activity::watch(Platform& platform) {
  platform.mainActor = counting(platform.mainActor);
  platform.background = counting(platform.background);
  platform.callbacks = counting(platform.callbacks);
  platform.urlSession = std::make_shared<CountingSession>(platform.urlSession, count_, loaded_);
}

std::shared_ptr<Executor> Activity::counting(std::shared_ptr<Executor> executor) const {
  return std::make_shared<CountingExecutor>(std::move(executor), count_);
}

}  // namespace TalvoConsentHost
