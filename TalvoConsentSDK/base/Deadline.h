#pragma once

// Computes when a wait ends.

#include <algorithm>
#include <chrono>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Returns the time at which `limit` will have passed. A limit above one year counts as one year: a later
/// time could overflow the clock, or the 32 bits in which some systems store its seconds.
inline std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds limit) {
  using std::chrono::milliseconds;
  constexpr milliseconds longest = std::chrono::hours(24 * 365);
  return std::chrono::steady_clock::now() + std::clamp(limit, milliseconds(0), longest);
}

}  // namespace TalvoConsentSDK
