#pragma once

// A worker thread that neither crashes nor delays the end of its process.

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Runs a loop on a thread of its own, with all signals blocked. When the process exits, the loop is asked to
/// stop and, once `wake` has returned, given 250 ms to end; the thread is then left as it is, so that a host
/// callback that never returns cannot hang the exit. A forked child does not have the thread: there, its end
/// is not waited for. Make one only after the libraries that its loop uses
/// have been initialised: exit handlers run in reverse order, so theirs then come after this one's.
class ParkedThread {
 public:
  using Loop = std::function<void(const std::atomic<bool>& stop)>;

  /// Starts `loop`, which returns soon after `stop` has become true. `wake` ends a wait of the loop; it is
  /// called from any thread and must stay callable until the process is gone.
  ParkedThread(Loop loop, std::function<void()> wake);

  /// Stops the loop and waits for it; on the thread itself, where a job may hold the last reference, it does
  /// not wait.
  ~ParkedThread();

  ParkedThread(const ParkedThread&) = delete;
  ParkedThread& operator=(const ParkedThread&) = delete;

 private:
  struct Shared;
  struct ExitList;

  const std::shared_ptr<Shared> shared_;
};

}  // namespace TalvoConsentSDK
