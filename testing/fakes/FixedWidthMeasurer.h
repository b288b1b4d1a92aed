#pragma once

// Text metrics that can be computed by hand.

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A character is half as wide as the font size, and a line is as high as the font's line height; both are
/// multiplied by the scale. Characters are code points; lines break at spaces. A word that is too long is
/// split, or if the measurer shrinks, the text is smaller.
class FixedWidthMeasurer : public platform::TextMeasurer {
 public:
  explicit FixedWidthMeasurer(double scale = 1, bool shrinks = false) : scale_(scale), shrinks_(shrinks) {}

  platform::Size measure(std::string_view text, const platform::Font& font, double width) override;
  double widestWord(std::string_view text, const platform::Font& font) override;

 private:
  double characterWidth(const platform::Font& font) const { return font.size() / 2 * scale_; }

  const double scale_;
  const bool shrinks_;
};

}  // namespace TalvoConsentSDK
