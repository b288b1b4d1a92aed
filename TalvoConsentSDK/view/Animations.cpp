#include "TalvoConsentSDK/view/Animations.h"

#include <algorithm>

namespace TalvoConsentSDK {
namespace view {

namespace {
constexpr std::chrono::duration<double> duration(0.25);
constexpr std::chrono::milliseconds headStart(16);  // one frame: the first frame already shows motion
constexpr auto notStarted = Animations::Clock::time_point::max();
}  // namespace

void Animations::beginFrame(Clock::time_point now) {
  now_ = now;
  isInFrame_ = true;
  isMoving_ = false;
}

double Animations::value(ElementId identity, double target) {
  Motion& motion = memory_.get<Motion>(identity, [&] { return Motion{target, target, now_}; });
  if (!hasMotion_) motion = {target, target, now_};
  if (motion.to != target) motion = {position(motion), target, notStarted};
  if (motion.start == notStarted && isInFrame_) motion.start = now_ - headStart;
  isMoving_ = isMoving_ || (motion.from != motion.to && now_ - duration < motion.start);
  return position(motion);
}

double Animations::position(const Motion& motion) const {
  const double left = std::clamp((motion.start - now_) / duration + 1, 0.0, 1.0);
  return motion.to + (motion.from - motion.to) * left * left * left;  // fast at first, then slower
}

}  // namespace view
}  // namespace TalvoConsentSDK
