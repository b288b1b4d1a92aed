#pragma once

// The host's options for the banner on Qt.

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Application.h"

#include "adapters/qt/SystemSettings.h"

class QWindow;

namespace TalvoConsentSDK TALVO_EXPORT {

/// Text scale, contrast and motion follow the system's settings, also while the banner is shown. An option
/// that is set overrides the system.
struct QtOptions {
  /// The factor by which texts are larger than usual; from 1 to about 3.
  std::optional<double> textScale = {};

  std::optional<platform::LayoutDirection> layoutDirection =
      {};  // if absent, the direction of the banner's texts

  /// Whether to draw in high contrast: texts and lines solid, controls with an outline.
  std::optional<bool> highContrast = {};

  /// Whether to do without animations.
  std::optional<bool> reducesMotion = {};

  /// Where the system's settings come from. If null, from the desktop's settings portal; Qt 6.10 and later
  /// also know the contrast where there is none.
  std::shared_ptr<SystemSettings> systemSettings = {};

  /// Returns the parts of a host window that the system's own bars and notches cover, in points. If absent,
  /// nothing is covered.
  std::function<platform::SafeArea(const QWindow&)> safeArea = {};

  /// How large the file of the HTTP cache may be, in bytes. 0 switches the cache off. Not used by
  /// `addQtWindows`.
  std::size_t maxCacheBytes = 10'000'000;

  /// Opens a URL outside the host. If absent, Qt opens it.
  std::function<void(const URL&)> openURL = {};
};

}  // namespace TalvoConsentSDK
