#pragma once

// The main actor of hosts that run a main loop of their own.

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
  /// `wake` tells the host's loop that there is something to drain; called after every post, on the posting
  /// thread, and must not call into the library. What it throws is contained. A loop that polls or uses
  /// `wait` needs none.
  explicit MainQueue(std::function<void()> wake = nullptr);

  void post(std::function<void()> job) override;

  /// Runs the jobs posted so far, on the calling thread, which must be the main one; tells how many. What
  /// they post in turn waits for the next call, so that a loop never starves. A job that runs a loop of its
  /// own may call it: the jobs behind it then run in their order.
  std::size_t drain();

  /// Waits until there is something to drain, at most `limit` or a year; tells whether there is.
  bool wait(std::chrono::milliseconds limit);

 private:
  const std::function<void()> wake_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> jobs_;
  std::size_t taken_ = 0;  // how many jobs have left the queue
};

}  // namespace TalvoConsentSDK
