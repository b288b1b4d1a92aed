#pragma once

// What the tests of the cache need: clocks that a test sets, and header fields.

#include <algorithm>
#include <chrono>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "adapters/cache/CacheClock.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

/// A device's clocks. Thread-safe.
class TestClock {
 public:
  std::shared_ptr<CacheClock> cacheClock() {
    return std::make_shared<CacheClock>([this] { return std::chrono::system_clock::time_point(wall()); },
                                        [this] { return std::chrono::steady_clock::time_point(steady()); });
  }

  void wait(std::chrono::seconds time) {
    const std::scoped_lock guard(lock_);
    wall_ += time;
    steady_ += time;
  }

  void set(std::chrono::seconds change) {
    const std::scoped_lock guard(lock_);
    wall_ += change;
    setBack_ += std::max(std::chrono::seconds(0), -change);
  }

  /// By how much the wall clock was set back, in total.
  std::chrono::seconds setBack() const {
    const std::scoped_lock guard(lock_);
    return setBack_;
  }

  /// The time since 1970, and the time since the device was started.
  std::chrono::seconds wall() const {
    const std::scoped_lock guard(lock_);
    return wall_;
  }
  std::chrono::seconds steady() const {
    const std::scoped_lock guard(lock_);
    return steady_;
  }

 private:
  mutable std::mutex lock_;
  std::chrono::seconds wall_{1'700'000'000};
  std::chrono::seconds steady_{1'000};
  std::chrono::seconds setBack_{0};
};

inline std::string httpDate(std::chrono::seconds since1970,
                            const char* format = "%a, %d %b %Y %H:%M:%S GMT") {
  const std::time_t time = since1970.count();
  std::tm parts{};
  ::gmtime_r(&time, &parts);
  char text[64] = "";
  return {text, std::strftime(text, sizeof text, format, &parts)};
}

using Fields = std::vector<std::pair<std::string, std::string>>;

/// The headers as a session reports them.
inline HTTPHeaders headersOf(const Fields& fields) {
  HTTPHeaders headers;
  for (const auto& [name, value] : fields) {
    std::string& joinedValue = headers[name];
    joinedValue += (joinedValue.empty() ? "" : ", ") + value;
  }
  return headers;
}

}  // namespace TalvoConsentSDK
