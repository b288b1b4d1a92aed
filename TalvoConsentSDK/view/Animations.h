#pragma once

// Numbers that move to a new value over time instead of jumping.

#include <chrono>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/view/Element.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// Animated numbers, at most one per element identity. They are kept in the elements' memory. The caller
/// provides the time.
class Animations {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Animations(ElementMemory& memory) : memory_(memory) {}

  /// Without motion, every number jumps to its target.
  void setHasMotion(bool hasMotion) { hasMotion_ = hasMotion; }

  /// Begins a frame: sets the current time for the calls until `endFrame`.
  void beginFrame(Clock::time_point now);

  /// Between two frames, numbers keep their values, and a motion that begins there starts with the next
  /// frame.
  void endFrame() { isInFrame_ = false; }

  /// Returns the number's current value while it moves to `target`. The first call for an identity returns
  /// `target`.
  double value(ElementId identity, double target);

  /// Whether any number that was read since the last frame began is still moving.
  bool isMoving() const { return isMoving_; }

 private:
  struct Motion {
    double from;
    double to;
    Clock::time_point start;
  };

  double position(const Motion& motion) const;

  ElementMemory& memory_;
  Clock::time_point now_;
  bool hasMotion_ = true;
  bool isInFrame_ = false;
  bool isMoving_ = false;
};

}  // namespace view
}  // namespace TalvoConsentSDK
