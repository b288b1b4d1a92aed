#pragma once

// The colours of one banner: the customization's four, read once, and the few that derive from them.

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

struct Palette {
  explicit Palette(const BannerCustomization::Colors& colors)
      : background(platform::colorFromText(colors.background)),
        buttonBackground(platform::colorFromText(colors.buttonBackground)),
        buttonFont(platform::colorFromText(colors.buttonFontColor)),
        font(platform::colorFromText(colors.font)) {}

  platform::Color background;
  platform::Color buttonBackground;
  platform::Color buttonFont;
  platform::Color font;

  /// Ordinary text of lesser weight: descriptions and labels.
  platform::Color secondaryFont() const { return font.withAlpha(font.alpha * 0.75); }

  /// Lines between rows.
  platform::Color line() const { return font.withAlpha(font.alpha * 0.2); }

  /// A switch stands out from the card by 3:1 in either position as long as buttons and text do.
  view::ToggleColors toggle() const {
    return {.on = buttonBackground, .off = font.withAlpha(font.alpha * 0.5), .knob = {1, 1, 1, 1}};
  }
};

}  // namespace TalvoConsentSDK
