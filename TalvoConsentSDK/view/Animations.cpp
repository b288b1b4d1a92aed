#include "TalvoConsentSDK/view/Animations.h"

#include <algorithm>

namespace TalvoConsentSDK {
namespace view {

namespace {
constexpr std::chrono::duration<double> duration(0.2);
constexpr std::chrono::milliseconds headStart(16);  // one frame: the first frame already shows motion
}  // namespace

void Animations::begin(Clock::time_point now, bool hasMotion) {
  now_ = now;
  hasMotion_ = hasMotion;
  isMoving_ = false;
}

double Animations::value(std::uint64_t identity, double target) {
  const auto [entry, isNew] = motions_.try_emplace(identity, Motion{target, target, now_});
  Motion& motion = entry->second;
  if (!hasMotion_) motion = {target, target, now_};
  if (motion.to != target) motion = {position(motion), target, now_ - headStart};
  isMoving_ = isMoving_ || (motion.from != motion.to && now_ - motion.start < duration);
  return position(motion);
}

double Animations::position(const Motion& motion) const {
  const double t = std::clamp((now_ - motion.start) / duration, 0.0, 1.0);
  const double eased = t * t * (3 - 2 * t);  // slow at both ends
  return motion.from + (motion.to - motion.from) * eased;
}

}  // namespace view
}  // namespace TalvoConsentSDK
