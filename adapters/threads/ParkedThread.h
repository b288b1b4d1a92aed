#pragma once

// A worker thread that does not crash its process at exit, and delays the exit only briefly.

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Runs a loop on its own thread, with all signals blocked. When the process exits, the loop is asked to stop
/// and, once `wake` has returned, has 250 ms to end. After that the thread is left running, so that a host
/// callback that never returns cannot hang the exit. A forked child does not have the thread and does not
/// wait for it. Before you make one, initialise the libraries that the loop uses: exit handlers run in
/// reverse order, so the libraries' handlers then run after the handler that stops the loop.
class ParkedThread {
 public:
  using Loop = std::function<void(const std::atomic<bool>& stop)>;

  /// Starts `loop`, which must return soon after `stop` has become true. `wake` interrupts a wait of the
  /// loop; it may be called on any thread and must stay callable until the process has ended.
  ParkedThread(Loop loop, std::function<void()> wake);

  /// Stops the loop and waits for its end. Does not wait when called on the thread itself, where a job may
  /// hold the last reference.
  ~ParkedThread();

  ParkedThread(const ParkedThread&) = delete;
  ParkedThread& operator=(const ParkedThread&) = delete;

 private:
  struct Shared;
  struct ExitList;

  const std::shared_ptr<Shared> shared_;
};

}  // namespace TalvoConsentSDK
