#pragma once

// The clocks of a cache.

#include <chrono>
#include <cstdint>
#include <functional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A time by two clocks: the wall clock, which can be set, and a steady clock, which cannot.
struct CacheTime {
  std::chrono::sys_seconds wall{};
  std::chrono::seconds steady{};
  std::uint64_t run = 0;  // identifies the run of a process in which `steady` is valid

  /// The seconds since `earlier`. Within one run, the result is never too small, even if the wall clock was
  /// set back. Between two runs only the wall clock counts; the result can be negative.
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
