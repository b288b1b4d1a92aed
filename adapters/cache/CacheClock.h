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

  /// The seconds since `earlier`. Within one run, the result is never too small while the device is awake,
  /// even if the wall clock was set back; some systems' steady clocks stand still while it sleeps. Between
  /// two runs only the wall clock counts; the result can be negative.
  std::chrono::seconds since(const CacheTime& earlier) const;
};

/// Reads both clocks. Thread-safe if the functions are.
class CacheClock {
 public:
  using Wall = std::function<std::chrono::system_clock::time_point()>;
  using Steady = std::function<std::chrono::steady_clock::time_point()>;

  /// `run` is the number of the time for which `steady` counts on; by default a number of this process.
  explicit CacheClock(Wall wall = std::chrono::system_clock::now,
                      Steady steady = std::chrono::steady_clock::now, std::uint64_t run = currentRun());

  /// A random number, the same for as long as the process runs.
  static std::uint64_t currentRun();

  CacheTime now() const;

 private:
  const Wall wall_;
  const Steady steady_;
  const std::uint64_t run_;
};

}  // namespace TalvoConsentSDK
