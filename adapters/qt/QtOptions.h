#pragma once

// What a host may choose about the banner on Qt.

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
  std::optional<platform::LayoutDirection> layoutDirection = {};  // absent: that of the banner's own text

  /// Whether texts and lines are drawn solid and controls with an outline; absent: what the system asks for,
  /// as far as Qt can tell, which it can from 6.10 on.
  std::optional<bool> highContrast = {};

  /// Whether everything moves at once to where it belongs. Qt cannot tell what the system asks for.
  bool reducesMotion = false;

  /// What the system's furniture covers of a host window, in points; absent: nothing.
  std::function<platform::Insets(const QWindow&)> safeArea = {};

  /// Opens a URL outside the host; absent: Qt does.
  std::function<void(const URL&)> openURL = {};
};

}  // namespace TalvoConsentSDK
