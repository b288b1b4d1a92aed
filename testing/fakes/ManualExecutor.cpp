#include "testing/fakes/ManualExecutor.h"

#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {
thread_local const ManualExecutor* currentExecutor = nullptr;
}

void ManualExecutor::post(std::function<void()> job) {
  const std::scoped_lock guard(lock_);
  jobs_.push_back(std::move(job));
}

std::size_t ManualExecutor::runAll() {
  const ManualExecutor* const outer = std::exchange(currentExecutor, this);
  std::size_t count = 0;
  for (;; ++count) {
    std::function<void()> job;
    {
      const std::scoped_lock guard(lock_);
      if (jobs_.empty()) break;
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    callHost(job);
  }
  currentExecutor = outer;
  return count;
}

bool ManualExecutor::isCurrent() const {
  return currentExecutor == this;
}

}  // namespace TalvoConsentSDK
