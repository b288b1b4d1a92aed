#pragma once

// Processor time, for ratios within one run: what else the machine does hardly matters.

#include <algorithm>
#include <cstddef>
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

/// How many times as much `cost` gives for ten times `size`, at best of a few tries: a busy machine only
/// adds. Ends with the first that is not more than `limit`.
template <class Cost>
double growth(const Cost& cost, std::size_t size, double limit) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 3 && best > limit; ++i) best = std::min(best, cost(10 * size) / cost(size));
  return best;
}

}  // namespace TalvoConsentSDK
