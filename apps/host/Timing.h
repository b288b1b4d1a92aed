#pragma once

// Measures how long the banner takes to appear.

#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentHost {

/// The times of the process's first banner, of the last banner requested, and of the last switch tapped. Call
/// these functions on the GUI thread.
class Timing {
 public:
  /// Call this right before showBanner.
  static void bannerRequested();

  /// From now on, records when the windows of banners present frames.
  static void watchBanners();

  /// Call this right before tapping a switch.
  static void switchTapped();

  /// The times in milliseconds; null for each that could not be measured.
  static TalvoConsentSDK::JSONObject report();
};

}  // namespace TalvoConsentHost
