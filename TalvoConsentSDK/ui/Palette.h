#pragma once

// The colours of one banner: the customization's four, read once, and the few that derive from them.

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

struct Palette {
  explicit Palette(const BannerCustomization::Colors& colors)
      : background(colorFromText(colors.background)),
        buttonBackground(colorFromText(colors.buttonBackground)),
        buttonFont(colorFromText(colors.buttonFontColor)),
        font(colorFromText(colors.font)) {}

  Color background;
  Color buttonBackground;
  Color buttonFont;
  Color font;

  /// Ordinary text of lesser weight: descriptions and labels.
  Color secondaryFont() const { return font.withAlpha(font.alpha * 0.75); }

  /// Lines between rows.
  Color line() const { return font.withAlpha(font.alpha * 0.2); }

  /// A switch stands out from the card by 3:1 in either position as long as buttons and text do.
  ToggleColors toggle() const {
    return {.on = buttonBackground, .off = font.withAlpha(font.alpha * 0.5), .knob = {1, 1, 1, 1}};
  }
};

}  // namespace TalvoConsentSDK
