#pragma once

// What the tests of the cache need: clocks that a test sets, and dates.

#include <atomic>
#include <chrono>
#include <ctime>
#include <memory>
#include <string>

#include "adapters/cache/CacheClock.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using std::chrono::seconds;

/// A device's clocks. Thread-safe.
class TestClock {
 public:
  /// Without a run, the process is this one.
  std::shared_ptr<CacheClock> cacheClock(std::uint64_t run = CacheClock::currentRun()) {
    return std::make_shared<CacheClock>([this] { return std::chrono::system_clock::time_point(wall()); },
                                        [this] { return std::chrono::steady_clock::time_point(steady()); },
                                        run);
  }

  void wait(seconds time) {
    wall_ += time.count();
    steady_ += time.count();
  }
  void set(seconds change) { wall_ += change.count(); }

  /// The time since 1970, and the time since the device was started.
  seconds wall() const { return seconds(wall_); }
  seconds steady() const { return seconds(steady_); }

 private:
  std::atomic<seconds::rep> wall_ = 1'700'000'000, steady_ = 1'000;
};

inline std::string httpDate(seconds since1970, const char* format = "%a, %d %b %Y %H:%M:%S GMT") {
  const std::time_t time = since1970.count();
  std::tm parts{};
  ::gmtime_r(&time, &parts);
  char text[64] = "";
  return {text, std::strftime(text, sizeof text, format, &parts)};
}

}  // namespace TalvoConsentSDK
