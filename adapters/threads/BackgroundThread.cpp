#include "adapters/threads/BackgroundThread.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

struct BackgroundThread::Queue {
  std::mutex lock;
  std::condition_variable changed;
  std::deque<std::function<void()>> jobs;

  void run(const std::atomic<bool>& stop) {
    for (std::unique_lock guard(lock);;) {
      changed.wait(guard, [&] { return stop || !jobs.empty(); });
      if (stop) return;
      std::function<void()> job = std::move(jobs.front());
      jobs.pop_front();
      guard.unlock();
      callHost(job);
      job = nullptr;  // release what the job holds outside the lock
      guard.lock();
    }
  }

  void wake() {
    const std::scoped_lock guard(lock);  // `stop` may have changed between the waiter's check and its wait
    changed.notify_all();
  }
};

BackgroundThread::BackgroundThread() : queue_(std::make_shared<Queue>()) {}

BackgroundThread::~BackgroundThread() = default;

void BackgroundThread::post(std::function<void()> job) {
  std::call_once(started_, [this] {
    thread_ =
        std::make_unique<ParkedThread>([queue = queue_](const std::atomic<bool>& stop) { queue->run(stop); },
                                       [queue = queue_] { queue->wake(); });
  });
  const std::scoped_lock guard(queue_->lock);
  queue_->jobs.push_back(std::move(job));
  queue_->changed.notify_all();
}

}  // namespace TalvoConsentSDK
