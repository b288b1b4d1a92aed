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

/// Returns the ratio of `cost(10 * size)` to `cost(size)`. Takes the smallest of up to ten tries, because
/// load on the machine tends to raise the ratio, and stops at the first one that is at most `limit`. A
/// proportional cost can also exceed `limit` if only the smaller size fits the processor's caches, or if
/// other programs use them. So the later tries also use ten times both sizes: the caches help neither of
/// these, and costs that are not proportional grow even faster there.
template <class Cost>
double growth(const Cost& cost, std::size_t size, double limit) {
  double best = std::numeric_limits<double>::infinity();
  for (int i = 1; i <= 10 && best > limit; ++i) {
    const std::size_t smaller = i > 3 && i % 2 == 0 ? 10 * size : size;
    best = std::min(best, cost(10 * smaller) / cost(smaller));
  }
  return best;
}

}  // namespace TalvoConsentSDK
