#pragma once

// The main actor for hosts that run their own main loop.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps jobs until the host's main loop drains them.
class MainQueue : public platform::Executor {
 public:
  /// `wake` notifies the host's loop that there are jobs to drain. It is called after every post, on the
  /// posting thread, and must not call into the library. Exceptions from it are caught. A loop that polls or
  /// uses `wait` does not need it.
  explicit MainQueue(std::function<void()> wake = nullptr);

  void post(std::function<void()> job) override;

  /// Runs the jobs posted so far on the calling thread, which must be the main thread, and returns how many
  /// it ran. Jobs posted meanwhile wait for the next call, so that a loop never starves. A job that runs a
  /// nested loop may call `drain`: the jobs behind it then run in order.
  std::size_t drain();

  /// Waits until there are jobs to drain, for at most `limit` and never longer than a year. Returns whether
  /// there are any.
  bool wait(std::chrono::milliseconds limit);

 private:
  const std::function<void()> wake_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> jobs_;
  std::size_t taken_ = 0;  // number of jobs that have left the queue
};

}  // namespace TalvoConsentSDK
