#include "adapters/cache/CacheClock.h"

#include <algorithm>
#include <random>
#include <utility>

namespace TalvoConsentSDK {

using std::chrono::floor;
using std::chrono::seconds;

seconds CacheTime::since(const CacheTime& earlier) const {
  const seconds byWall = wall - earlier.wall;
  return run == earlier.run ? std::max(byWall, steady - earlier.steady) : byWall;
}

std::uint64_t CacheClock::currentRun() {
  static const std::uint64_t run = [] {
    std::random_device device;
    return std::uniform_int_distribution<std::uint64_t>()(device);
  }();
  return run;
}

CacheClock::CacheClock(Wall wall, Steady steady, std::uint64_t run)
    : wall_(std::move(wall)), steady_(std::move(steady)), run_(run) {}

CacheTime CacheClock::now() const {
  return {floor<seconds>(wall_()), floor<seconds>(steady_().time_since_epoch()), run_};
}

}  // namespace TalvoConsentSDK
