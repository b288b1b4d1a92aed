#pragma once

// How long the banner took to be seen.

#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentHost {

/// Moments of the last banner. GUI thread.
class Timing {
 public:
  /// showBanner is about to be called.
  static void bannerRequested();

  /// Notes when the banners' windows present frames, from now on.
  static void watchBanners();

  /// A switch is about to be tapped.
  static void switchTapped();

  /// Milliseconds; null for what has not happened.
  static TalvoConsentSDK::JSONObject report();
};

}  // namespace TalvoConsentHost
