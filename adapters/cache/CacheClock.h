#pragma once

// The clocks of a cache.

#include <chrono>
#include <cstdint>
#include <functional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A time, by two clocks. Anybody may set the first; the second only counts while one process runs.
struct CacheTime {
  std::chrono::sys_seconds wall{};
  std::chrono::seconds steady{};
  std::uint64_t run = 0;  // which run of which process `steady` belongs to

  /// The seconds since `earlier`. In one run never less than have passed, whatever the wall clock was set to.
  /// Negative if the wall clock was set back between two runs.
  std::chrono::seconds since(const CacheTime& earlier) const;
};

/// Reads both clocks. Thread-safe if the functions are.
class CacheClock {
 public:
  using Wall = std::function<std::chrono::system_clock::time_point()>;
  using Steady = std::function<std::chrono::steady_clock::time_point()>;

  explicit CacheClock(Wall wall = std::chrono::system_clock::now,
                      Steady steady = std::chrono::steady_clock::now);

  CacheTime now() const;

 private:
  const Wall wall_;
  const Steady steady_;
  const std::uint64_t run_;
};

}  // namespace TalvoConsentSDK
