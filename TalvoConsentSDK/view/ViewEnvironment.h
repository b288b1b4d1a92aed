#pragma once

// What a window tells the views in it.

#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

struct ViewEnvironment {
  std::shared_ptr<TextMeasurer> textMeasurer;
  std::shared_ptr<ImageLoader> imageLoader;
  double textScale = 1;  // that the measurer works with
  Size size;             // of the window, in points
  Insets safeArea;       // what the system's own furniture covers of it
  LayoutDirection layoutDirection = LayoutDirection::leftToRight;  // set by the controller
  bool reducesMotion = false;
  bool highContrast = false;  // translucent texts and lines are drawn solid, controls with an outline
};

}  // namespace view
}  // namespace TalvoConsentSDK
