#include "TalvoConsentSDK/view/ScrollMotion.h"

#include <cmath>

namespace TalvoConsentSDK {
namespace view {

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds sampleAge(0.1);
constexpr double startSpeed = 50;      // points per second; a slower release does not start a fling
constexpr double endSpeed = 10;        // points per second; a slower fling ends
constexpr double decay = 0.135335283;  // share of the speed left after a second (about 0.998 per millisecond)

}  // namespace

void ScrollMotion::grab(std::uint64_t region, double y, Clock::time_point now) {
  region_ = region;
  speed_ = 0;
  samples_ = {{now, y}};
}

double ScrollMotion::drag(double y, Clock::time_point now) {
  if (samples_.empty()) return 0;
  const double distance = samples_.back().y - y;
  samples_.push_back({now, y});
  while (now - samples_.front().time > sampleAge && samples_.size() > 2) samples_.erase(samples_.begin());
  return distance;
}

void ScrollMotion::release(Clock::time_point now) {
  if (samples_.size() > 1) {
    const Seconds time = now - samples_.front().time;
    const double speed = time.count() > 0 ? (samples_.front().y - samples_.back().y) / time.count() : 0;
    if (std::abs(speed) >= startSpeed) speed_ = speed;
  }
  samples_.clear();
  stepped_ = now;
}

// The speed falls exponentially. The distance is its integral, so it does not depend on the length of the
// steps.
double ScrollMotion::step(Clock::time_point now) {
  const Seconds time = now - stepped_;
  stepped_ = now;
  const double later = speed_ * std::pow(decay, time.count());
  const double distance = (later - speed_) / std::log(decay);
  speed_ = std::abs(later) < endSpeed ? 0 : later;
  return distance;
}

void ScrollMotion::stop() {
  speed_ = 0;
  samples_.clear();
}

}  // namespace view
}  // namespace TalvoConsentSDK
