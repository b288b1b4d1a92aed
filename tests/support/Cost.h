#pragma once

// Measures processor time, for ratios within one run. Other load on the machine hardly matters.

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <limits>

namespace TalvoConsentSDK {

/// The smallest processor time, in seconds, that `work` takes in several runs.
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

/// The ratio of `cost` for ten times `size` to `cost` for `size`. Returns the smallest of up to three tries,
/// since load on the machine tends to add to the ratio, and stops at the first that is at most `limit`. Where
/// the larger size no longer fits the processor's caches, the ratio is too large although the cost is
/// proportional; so the last try uses ten times both sizes, at which a cost that is not is even steeper.
template <class Cost>
double growth(const Cost& cost, std::size_t size, double limit) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 3 && best > limit; ++i) best = std::min(best, cost(10 * size) / cost(size));
  return best > limit ? std::min(best, cost(100 * size) / cost(10 * size)) : best;
}

}  // namespace TalvoConsentSDK
