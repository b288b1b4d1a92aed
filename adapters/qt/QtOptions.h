#pragma once

// The host's options for the banner on Qt.

#include <functional>
#include <optional>

#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/platform/Export.h"
#include "TalvoConsentSDK/platform/Geometry.h"

#include "adapters/qt/QtText.h"

class QWindow;

namespace TalvoConsentSDK TALVO_EXPORT {

struct QtOptions {
  TextSettings text = {};
  std::optional<LayoutDirection> layoutDirection = {};  // if absent, the direction of the banner's texts

  /// Whether to draw texts and lines solid and controls with an outline. If absent, the system's setting,
  /// which Qt knows from version 6.10 on; off with older versions.
  std::optional<bool> highContrast = {};

  /// Whether to do without animations. Qt does not know the system's setting.
  bool reducesMotion = false;

  /// The parts of a host window that the system's own bars and notches cover, in points; absent if none.
  std::function<Insets(const QWindow&)> safeArea = {};

  /// Opens a URL outside the host. If absent, Qt opens it.
  std::function<void(const URL&)> openURL = {};
};

}  // namespace TalvoConsentSDK
