#pragma once

// Ends requests that nobody needs any more.

#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Shared by whoever starts requests and may cancel them, and by the sessions that run them. Thread-safe.
class Cancellation {
 public:
  Cancellation() = default;
  Cancellation(const Cancellation&) = delete;
  Cancellation& operator=(const Cancellation&) = delete;

  /// Calls the observers, on this thread, and releases them. Does nothing the second time.
  void cancel();

  bool isCancelled() const;

  /// Calls `observer` once: when `cancel` is called, or at once if it has been called before. `observer` must
  /// not throw. It must not own anything that owns this object, because this object keeps it until `cancel`.
  void observe(std::function<void()> observer);

 private:
  mutable std::mutex lock_;
  bool isCancelled_ = false;
  std::vector<std::function<void()>> observers_;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
