#include "adapters/cache/CacheClock.h"

#include <algorithm>
#include <utility>

namespace TalvoConsentSDK {

using namespace std::chrono;

CacheClock::CacheClock(Wall wall, Steady steady)
    : wall_(std::move(wall)), steady_(std::move(steady)), wallThen_(wall_()), steadyThen_(steady_()) {}

sys_seconds CacheClock::now() {
  const std::scoped_lock guard(lock_);
  const auto wall = wall_();
  const auto steady = steady_();
  const auto expected = wallThen_ + duration_cast<system_clock::duration>(steady - steadyThen_);
  if (wall > expected) {
    wallThen_ = wall;
    steadyThen_ = steady;
  }
  return floor<seconds>(std::max(wall, expected));
}

}  // namespace TalvoConsentSDK
