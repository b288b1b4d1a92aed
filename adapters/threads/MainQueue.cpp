#include "adapters/threads/MainQueue.h"

#include <utility>

#include "TalvoConsentSDK/base/Deadline.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

MainQueue::MainQueue(std::function<void()> wake) : wake_(std::move(wake)) {}

void MainQueue::post(std::function<void()> job) {
  {
    const std::scoped_lock guard(lock_);
    jobs_.push_back(std::move(job));
    changed_.notify_all();
  }
  callHost(wake_);
}

std::size_t MainQueue::drain() {
  std::unique_lock guard(lock_);
  // A job may call `drain` too. So this call stops by the count of all jobs ever taken, which includes those
  // that the nested call takes.
  const std::size_t end = taken_ + jobs_.size();
  std::size_t count = 0;
  for (; taken_ < end; ++count) {
    std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    ++taken_;
    guard.unlock();
    callHost(job);
    job = nullptr;  // release what the job holds outside the lock
    guard.lock();
  }
  return count;
}

bool MainQueue::wait(std::chrono::milliseconds limit) {
  std::unique_lock guard(lock_);
  return changed_.wait_until(guard, deadlineAfter(limit), [this] { return !jobs_.empty(); });
}

}  // namespace TalvoConsentSDK
