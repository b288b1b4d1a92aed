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

bool hasLinks(const std::optional<std::vector<BannerCustomization::ComponentItem>>& screen) {
  return screen &&
         std::ranges::find(*screen, "links", &BannerCustomization::ComponentItem::id) != screen->end();
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

std::string_view Palette::unseenColors(const BannerCustomization::Customization& customization) {
  const auto& components = customization.components;
  const Palette palette(customization.colors);
  const Color own = colorFromText(customization.colors.buttonFontColor);
  const bool showsLinks =
      components && (hasLinks(components->mainScreen) || hasLinks(components->secondaryScreen));
  const bool isFontUnseen = palette.font != colorFromText(customization.colors.font);
  if (palette.buttonFont == own && (!showsLinks || palette.link == own)) return isFontUnseen ? "font" : "";
  return isFontUnseen ? "font buttonFontColor" : "buttonFontColor";
}

}  // namespace TalvoConsentSDK
