#pragma once

// Processor time, for ratios within one run: what else the machine does hardly matters.

#include <algorithm>
#include <ctime>
#include <limits>

namespace TalvoConsentSDK {

/// Seconds of this process's processor time that `work` takes at best, of a few times.
template <class Work>
double bestCost(Work work) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 3; ++i) {
    const std::clock_t before = std::clock();
    work();
    best = std::min(best, static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC);
  }
  return best;
}

}  // namespace TalvoConsentSDK
