#pragma once

// How a scrolling part follows a finger and goes on when it is let go.

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// One drag and the fling after it, as a function of a clock. Distances are points the content moves up by.
class ScrollMotion {
 public:
  using Clock = std::chrono::steady_clock;

  /// A finger takes hold of a region at height `y`; a fling ends.
  void grab(std::uint64_t region, double y, Clock::time_point now);

  /// The finger is at `y`; answers how far to scroll.
  double drag(double y, Clock::time_point now);

  /// The finger lets go, where `drag` was last told; quick enough, the content goes on.
  void release(Clock::time_point now);

  /// How far to scroll since the last step of a fling.
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
  std::vector<Sample> samples_;  // of the last tenth of a second
  double speed_ = 0;             // points a second
  Clock::time_point stepped_;
};

}  // namespace view
}  // namespace TalvoConsentSDK
