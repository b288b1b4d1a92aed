#pragma once

// What a window provides to the views in it.

#include <algorithm>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/platform/TextMeasurer.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

struct ViewEnvironment {
  std::shared_ptr<TextMeasurer> textMeasurer;
  std::shared_ptr<ImageLoader> imageLoader;
  double textScale = 1;  // the scale that the measurer applies
  Size size;             // of the window, in points
  SafeArea safeArea;
  LayoutDirection layoutDirection = LayoutDirection::leftToRight;  // set by the controller
  bool reducesMotion = false;

  /// Makes translucent texts, symbols, lines and backgrounds solid, and outlines controls.
  bool highContrast = false;

  /// By how much symbols, switches and hit areas grow with the text: at most to twice their size, so that a
  /// switch leaves room for its name on a small phone.
  double controlScale() const { return std::clamp(textScale, 1.0, 2.0); }
};

}  // namespace view
}  // namespace TalvoConsentSDK
