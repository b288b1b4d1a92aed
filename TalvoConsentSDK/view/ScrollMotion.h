#pragma once

// How a scrolling region follows a finger and keeps moving after the finger lets go.

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// One drag and the fling that follows it. The caller provides the time. Distances are in points; a positive
/// distance moves the content up.
class ScrollMotion {
 public:
  using Clock = std::chrono::steady_clock;

  /// Starts a drag of a region at `y` and ends any fling.
  void grab(std::uint64_t region, double y, Clock::time_point now);

  /// Moves the finger to `y` and returns how far to scroll.
  double drag(double y, Clock::time_point now);

  /// Ends the drag at the position last passed to `drag`. If the finger was fast enough, a fling starts.
  void release(Clock::time_point now);

  /// Returns how far the fling has moved since the last step.
  double step(Clock::time_point now);

  void stop();

  bool isFlinging() const { return speed_ != 0; }
  std::optional<std::uint64_t> region() const { return region_; }

 private:
  struct Sample {
    Clock::time_point time;
    double y;
  };

  std::optional<std::uint64_t> region_;
  std::vector<Sample> samples_;  // from the last tenth of a second, but at least the last two
  double speed_ = 0;             // points per second
  Clock::time_point stepped_;
};

}  // namespace view
}  // namespace TalvoConsentSDK
