#pragma once

// The time of a cache: wall time that never goes back while the process runs.

#include <chrono>
#include <functional>
#include <mutex>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Follows the system's clock when that is set forward. When it is set back, goes on as if it had not been,
/// so that no reply seems younger than it is. Thread-safe.
class CacheClock {
 public:
  using Wall = std::function<std::chrono::system_clock::time_point()>;
  using Steady = std::function<std::chrono::steady_clock::time_point()>;

  explicit CacheClock(Wall wall = std::chrono::system_clock::now,
                      Steady steady = std::chrono::steady_clock::now);

  std::chrono::sys_seconds now();

 private:
  const Wall wall_;
  const Steady steady_;
  std::mutex lock_;
  std::chrono::system_clock::time_point wallThen_;  // the latest reading that the clock followed
  std::chrono::steady_clock::time_point steadyThen_;
};

}  // namespace TalvoConsentSDK
