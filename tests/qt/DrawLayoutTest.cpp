// The banner laid out with the texts of a surface, compared with the banner laid out with Qt's. Where lines
// may break differently, see docs/architecture.md.

#include <QTextLayout>
#include <cmath>

#include "adapters/draw/DrawTextMeasurer.h"
#include "adapters/qt/ScriptFonts.h"

#include "tests/qt/ShownBanner.h"

namespace TalvoConsentSDK {

namespace {

void compareWidths(const std::string& text, double textScale, FontSet& fonts) {
  for (const platform::Font& font : {platform::Font{TextStyle::body, FontWeight::regular},
                                     platform::Font{TextStyle::footnote, FontWeight::medium},
                                     platform::Font{TextStyle::headline, FontWeight::bold}}) {
    QTextLayout layout(toQString(text), toQFont(font, {textScale}));
    layout.setFormats(scriptFormats(layout.text()));
    layout.beginLayout();
    QTextLine line = layout.createLine();
    if (line.isValid()) line.setLineWidth(100'000);
    layout.endLayout();
    const double expected = line.isValid() ? line.horizontalAdvance() : 0;
    const ShapedText shaped(text, font.weight, fonts, "", nullptr);
    const double width = shaped.edges(std::round(font.size() * textScale))->back();
    // Qt rounds a letter's kerning, too, to 1/64 of a point.
    EXPECT_NEAR(width, expected, 0.25 + static_cast<double>(shaped.size()) / 256) << text;
  }
}

class DrawLayoutTest : public TestWithParam<std::array<std::string, 4>> {};
INSTANTIATE_TEST_SUITE_P(All, DrawLayoutTest, ValuesIn(tableOf<4>("draw/layouts.txt")), byFirstCell);

TEST_P(DrawLayoutTest, AgreesWithQt) {
  const auto& [name, language, button, scale] = GetParam();
  const double textScale = std::stod(scale);
  ShownBanner banner(siteFile("demo/customization." + language + ".json"),
                     siteFile("demo/services." + language + ".json"), {.textScale = textScale});
  HostingController& controller = *banner.surface().controller();
  const ViewEnvironment ofQt = controller.environment();
  ViewEnvironment ofDraw = ofQt;
  ofDraw.textMeasurer = std::make_shared<DrawTextMeasurer>(
      std::make_shared<Paragraphs>(std::make_shared<FontSet>(std::vector<FontSource>{}, true), nullptr),
      textScale);
  const auto fonts = std::make_shared<FontSet>(std::vector<FontSource>{}, true);
  for (const bool isPreferences : {false, true}) {
    if (isPreferences) {
      const auto elements = controller.accessibleElements();
      const auto found = std::ranges::find(elements, button, &AccessibleElement::name);
      ASSERT_NE(found, elements.end());
      controller.activate(found->id);
    }
    controller.setEnvironment(ofQt);
    const auto expected = controller.accessibleElements(Layout::Rows::all);
    controller.setEnvironment(ofDraw);
    const auto actual = controller.accessibleElements(Layout::Rows::all);
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
      const Rect& a = actual[i].frame;
      const Rect& e = expected[i].frame;
      const double apart = std::max({std::abs(a.x - e.x), std::abs(a.y - e.y), std::abs(a.width - e.width),
                                     std::abs(a.height - e.height)});
      // The width of a long line, which is rounded up, may be another whole number.
      EXPECT_LE(apart, actual[i].isControl() ? 0.5 : 1) << actual[i].name;
      compareWidths(actual[i].name, textScale, *fonts);
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
