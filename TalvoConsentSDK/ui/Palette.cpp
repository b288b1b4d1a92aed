#include "TalvoConsentSDK/ui/Palette.h"

#include <algorithm>
#include <cmath>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// Below this share of the full range, neither a colour nor its distance to another one is visible.
constexpr double minVisible = 0.02;

// Returns a colour in which text can be seen on `behind`. What lies behind a translucent colour is unknown.
Color visibleOn(const Color& behind, const Color& color) {
  const double distance = std::max({std::abs(color.red - behind.red), std::abs(color.green - behind.green),
                                    std::abs(color.blue - behind.blue), behind.alpha < 0.5 ? 1.0 : 0.0});
  if (color.alpha * distance > minVisible) return color;
  const double brightness = 0.3 * behind.red + 0.6 * behind.green + 0.1 * behind.blue;
  return brightness > 0.5 ? Color::black() : Color{1, 1, 1, 1};
}

}  // namespace

Palette::Palette(const BannerCustomization::Colors& colors)
    : background(colorFromText(colors.background)),
      buttonBackground(colorFromText(colors.buttonBackground)),
      buttonFont(colorFromText(colors.buttonFontColor)),
      link(visibleOn(background, buttonFont)),
      font(visibleOn(background, colorFromText(colors.font))) {
  buttonFont = visibleOn(buttonBackground.alpha < 0.5 ? background : buttonBackground, buttonFont);
}

std::string Palette::unseenColors(const BannerCustomization::Colors& colors) {
  const Palette palette(colors);
  std::string keys;
  if (palette.font != colorFromText(colors.font)) keys += "font ";
  const Color own = colorFromText(colors.buttonFontColor);
  if (palette.buttonFont != own || palette.link != own) keys += "buttonFontColor ";
  if (!keys.empty()) keys.pop_back();
  return keys;
}

}  // namespace TalvoConsentSDK
