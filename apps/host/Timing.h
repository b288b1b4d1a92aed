#pragma once

// Measures how long the banner takes to appear.

#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentHost {

/// The times of the process's first banner, of the last banner requested, and of the last switch tapped. Call
/// these functions on the main thread, unless they say otherwise.
class Timing {
 public:
  /// Call this right before showBanner.
  static void bannerRequested();

  /// Call this whenever a frame with a banner has been presented. Thread-safe.
  static void framePresented();

  /// Call this right before tapping a switch.
  static void switchTapped();

  /// The times in milliseconds; null for each that could not be measured.
  static TalvoConsentSDK::JSONObject report();
};

}  // namespace TalvoConsentHost
