#pragma once

// Numbers that move to a new value over time instead of jumping.

#include <chrono>
#include <cstdint>
#include <unordered_map>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// Moving numbers by the identity of what they move. Time is what the owner says it is.
class Animations {
 public:
  using Clock = std::chrono::steady_clock;

  /// Sets the present time for the calls that follow; without motion every number jumps.
  void begin(Clock::time_point now, bool hasMotion);

  /// Where the number is on its way to `target`. One asked for the first time is there already.
  double value(std::uint64_t identity, double target);

  /// Whether any number asked for since `begin` has not arrived.
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
