// Finds colours that cannot be read, and pairs of colours with too little contrast.

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/LinkComponentRenderer.h"
#include "TalvoConsentSDK/ui/Palette.h"

#include "apps/lint/Site.h"

namespace TalvoConsentSDK::linting {

using namespace platform;
using namespace view;

namespace {

using Colors = BannerCustomization::Colors;

// The minimum contrasts that WCAG 2.2 requires of text (1.4.3) and of the parts that identify a control
// (1.4.11).
constexpr double minContrastOfText = 4.5;
constexpr double minContrastOfControls = 3;

constexpr std::pair<const char*, std::string Colors::*> colors[] = {
    {"background", &Colors::background},
    {"buttonBackground", &Colors::buttonBackground},
    {"buttonFontColor", &Colors::buttonFontColor},
    {"font", &Colors::font},
};

double luminance(const Color& color) {
  const auto linear = [](double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

Color over(const Color& upper, const Color& lower) {
  const auto mix = [&](double a, double b) { return a * upper.alpha + b * (1 - upper.alpha); };
  return {mix(upper.red, lower.red), mix(upper.green, lower.green), mix(upper.blue, lower.blue), 1};
}

// Returns the contrast of a color on top of layers (the lowest last). The host below may have any colour; the
// result is the lower of the contrasts over white and over black.
double contrast(const Color& color, const std::vector<Color>& layers) {
  double worst = 21;
  for (Color ground : {Color::black(), Color{1, 1, 1, 1}}) {
    for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) ground = over(*layer, ground);
    const auto [darker, lighter] = std::minmax({luminance(over(color, ground)), luminance(ground)});
    worst = std::min(worst, (lighter + 0.05) / (darker + 0.05));
  }
  return worst;
}

class ColorCheck {
 public:
  ColorCheck(const CustomizationDocument& document, Report& report)
      : document_(document), customization_(*document.record.customization), report_(report) {}

  void run() {
    bool areReadable = true;
    for (const auto& [key, member] : colors) {
      const std::string& text = customization_.colors.*member;
      if (isColorText(text)) continue;
      areReadable = false;
      report_.error(document_.name, path(key),
                    quoted(text) + " is not a colour: hexadecimal RGB, RRGGBB or AARRGGBB is needed");
    }
    if (areReadable) checkContrasts();
    warnOfButtonColors();
  }

 private:
  static std::string path(const char* key) { return std::string("customization.colors.") + key; }

  void require(double minContrast, const char* key, const char* what, const Color& color,
               const std::vector<Color>& layers) {
    const double found = contrast(color, layers);
    if (found >= minContrast) return;
    char sentence[128];
    // Rounds down, so that a contrast just below the minimum is not printed as the minimum.
    std::snprintf(sentence, sizeof sentence, "%s have a contrast of %.2f:1; %.1f:1 is needed", what,
                  std::floor(found * 100) / 100, minContrast);
    report_.error(document_.name, path(key), sentence);
  }

  void checkContrasts() {
    Palette palette(customization_.colors);
    palette.font = colorFromText(customization_.colors.font);  // measures the site's own colours
    palette.buttonFont = colorFromText(customization_.colors.buttonFontColor);
    const Color& card = palette.background;
    require(minContrastOfText, "font", "texts on the card", palette.font, {card});
    require(minContrastOfText, "font", "descriptions, which are drawn fainter, on the card",
            palette.secondaryFont(), {card});
    require(minContrastOfText, "buttonFontColor", "button titles", palette.buttonFont,
            {palette.buttonBackground, card});
    require(minContrastOfControls, "buttonBackground", "buttons on the card", palette.buttonBackground,
            {card});
    if (drawsLinks()) {
      require(minContrastOfText, "buttonFontColor", "links on the card", palette.buttonFont, {card});
    }
    if (!drawsTabs()) return;
    const ToggleColors toggle = palette.toggleColors();
    require(minContrastOfControls, "font", "switches that are off, on the card,", toggle.off, {card});
    require(minContrastOfControls, "font", "knobs of switches that are off", toggle.knob, {toggle.off, card});
    require(minContrastOfControls, "buttonBackground", "switches that are on, on the card,", toggle.on,
            {card});
    require(minContrastOfControls, "buttonBackground", "knobs of switches that are on", toggle.knob,
            {toggle.on, card});
  }

  template <class Predicate>
  bool anyItem(const Predicate& predicate) const {
    return std::ranges::any_of(screens(document_.record), [&](const Screen& screen) {
      return std::ranges::any_of(screen.items, [&](const BannerCustomization::ComponentItem& item) {
        return ComponentRendererFactory::isComplete(item) && predicate(item);
      });
    });
  }

  bool drawsTabs() const {
    return anyItem([](const auto& item) { return item.id == "tabs"; });
  }

  bool drawsLinks() const {
    return anyItem([&](const auto& item) {
      return item.id == "links" && std::ranges::any_of(*item.links, [&](const std::string& link) {
               return LinksComponentRenderer::isVisible(link, customization_);
             });
    });
  }

  // All buttons look alike, because their own colours are never drawn.
  void warnOfButtonColors() {
    for (const Screen& screen : screens(document_.record)) {
      for (std::size_t i = 0; i < screen.items.size(); ++i) {
        const auto& buttons = screen.items[i].buttons;
        for (std::size_t j = 0; buttons && j < buttons->size(); ++j) {
          if (!(*buttons)[j].color) continue;
          report_.warning(
              document_.name, at(at(screen.path, i) + ".buttons", j) + ".color",
              "a button's own colour is never drawn, because no choice may be favoured: remove it");
        }
      }
    }
  }

  const CustomizationDocument& document_;
  const BannerCustomization::Customization& customization_;
  Report& report_;
};

}  // namespace

void checkColors(const Site& site, Report& report) {
  for (const auto& document : site.customizations) {
    if (document.record.customization) ColorCheck(document, report).run();
  }
}

}  // namespace TalvoConsentSDK::linting
