#include "adapters/threads/MainQueue.h"

#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

MainQueue::MainQueue(std::function<void()> wake) : wake_(std::move(wake)) {}

void MainQueue::post(std::function<void()> job) {
  {
    const std::scoped_lock guard(lock_);
    jobs_.push_back(std::move(job));
    changed_.notify_all();
  }
  if (wake_) wake_();
}

std::size_t MainQueue::drain() {
  std::deque<std::function<void()>> jobs;
  {
    const std::scoped_lock guard(lock_);
    jobs.swap(jobs_);
  }
  for (const auto& job : jobs) callHost(job);
  return jobs.size();
}

bool MainQueue::wait(std::chrono::milliseconds limit) {
  std::unique_lock guard(lock_);
  return changed_.wait_for(guard, limit, [this] { return !jobs_.empty(); });
}

}  // namespace TalvoConsentSDK
