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

/// Returns the ratio of `cost(10 * size)` to `cost(size)`. Takes the smallest of up to three tries, because
/// load on the machine tends to raise the ratio, and stops at the first one that is at most `limit`. A
/// proportional cost can also exceed `limit` if the smaller size fits into the processor's caches and the
/// larger one does not. So a last try uses ten times both sizes. There the caches help neither, and costs
/// that grow faster than in proportion grow even more.
template <class Cost>
double growth(const Cost& cost, std::size_t size, double limit) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 3 && best > limit; ++i) best = std::min(best, cost(10 * size) / cost(size));
  return best > limit ? std::min(best, cost(100 * size) / cost(10 * size)) : best;
}

}  // namespace TalvoConsentSDK
