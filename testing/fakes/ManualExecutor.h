#pragma once

// An executor whose jobs run when a test says so.

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps jobs until `runAll`. It stands for a thread: `isCurrent` returns true in its jobs.
class ManualExecutor : public platform::Executor {
 public:
  void post(std::function<void()> job) override;

  /// Runs jobs on the calling thread until none is left, including jobs posted meanwhile. Returns how many it
  /// ran.
  std::size_t runAll();

  /// Whether the calling thread is running one of this executor's jobs.
  bool isCurrent() const;

 private:
  std::mutex lock_;
  std::deque<std::function<void()>> jobs_;
};

}  // namespace TalvoConsentSDK
