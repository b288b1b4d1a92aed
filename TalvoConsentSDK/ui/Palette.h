#pragma once

// The colours of one banner: the customization's four, parsed once, and the few derived from them.

#include <string_view>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

struct Palette {
  /// Text that could not be seen becomes black or white: text that is clear or has the colour behind it.
  explicit Palette(const BannerCustomization::Colors& colors);

  platform::Color background;
  platform::Color buttonBackground;
  platform::Color buttonFont;
  platform::Color link;
  platform::Color font;

  /// The keys of the colours that were replaced because text in them could not be seen. The colour of links
  /// counts only if a screen has links.
  static std::string_view unseenColors(const BannerCustomization::Customization& customization);

  /// For less important text: descriptions and labels.
  platform::Color secondaryFont() const { return font.withAlpha(font.alpha * 0.75); }

  /// For the lines between rows.
  platform::Color line() const { return font.withAlpha(font.alpha * 0.2); }

  /// A switch that is on contrasts with the card as much as the buttons do. A switch that is off is fainter
  /// than the text and contrasts less. The lint requires a contrast of 3:1 in both states.
  view::ToggleColors toggleColors() const {
    return {.on = buttonBackground, .off = font.withAlpha(font.alpha * 0.5), .knob = {1, 1, 1, 1}};
  }
};

}  // namespace TalvoConsentSDK
