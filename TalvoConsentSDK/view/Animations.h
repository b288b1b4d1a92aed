#pragma once

// Numbers that move to a new value over time instead of jumping.

#include <chrono>
#include <cstdint>
#include <unordered_map>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// Animated numbers, at most one per element identity. The caller provides the time.
class Animations {
 public:
  using Clock = std::chrono::steady_clock;

  /// Sets the current time for the calls that follow. Without motion, every number jumps to its target.
  void begin(Clock::time_point now, bool hasMotion);

  /// Returns the number's current value while it moves to `target`. The first call for an identity returns
  /// `target`.
  double value(std::uint64_t identity, double target);

  /// Whether any number that was read since `begin` is still moving.
  bool isMoving() const { return isMoving_; }

 private:
  struct Motion {
    double from;
    double to;
    Clock::time_point start;
  };

  double position(const Motion& motion) const;

  std::unordered_map<std::uint64_t, Motion> motions_;
  Clock::time_point now_;
  bool hasMotion_ = true;
  bool isMoving_ = false;
};

}  // namespace view
}  // namespace TalvoConsentSDK
