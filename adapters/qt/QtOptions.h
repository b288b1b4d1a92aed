#pragma once

// The host's options for the banner on Qt.

#include <cstddef>
#include <functional>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Application.h"

#include "adapters/qt/QtText.h"

class QWindow;

namespace TalvoConsentSDK TALVO_EXPORT {

struct QtOptions {
  TextSettings text = {};
  std::optional<platform::LayoutDirection> layoutDirection =
      {};  // if absent, the direction of the banner's texts

  /// Whether to draw in high contrast: texts and lines solid, controls with an outline. If absent, the
  /// system's setting is used, which Qt knows from version 6.10 on; with an older Qt, high contrast is off.
  std::optional<bool> highContrast = {};

  /// Whether to do without animations. Qt does not know the system's setting.
  bool reducesMotion = false;

  /// Returns the parts of a host window that the system's own bars and notches cover, in points. If absent,
  /// nothing is covered.
  std::function<platform::Insets(const QWindow&)> safeArea = {};

  /// How large the file of the HTTP cache may be, in bytes. 0 switches the cache off. Not used by
  /// `addQtWindows`.
  std::size_t maxCacheBytes = 10'000'000;

  /// Opens a URL outside the host. If absent, Qt opens it.
  std::function<void(const URL&)> openURL = {};
};

}  // namespace TalvoConsentSDK
