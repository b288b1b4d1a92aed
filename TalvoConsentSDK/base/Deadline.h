#pragma once

// When a wait ends.

#include <algorithm>
#include <chrono>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// The time at which `limit` will have passed. What is longer than a year counts as a year: beyond, a clock's
/// time overflows or does not fit the 32 bits that some systems have for its seconds.
inline std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds limit) {
  using std::chrono::milliseconds;
  constexpr milliseconds longest = std::chrono::hours(24 * 365);
  return std::chrono::steady_clock::now() + std::clamp(limit, milliseconds(0), longest);
}

}  // namespace TalvoConsentSDK
