#pragma once

// Text metrics where there is no toolkit to ask, close enough to tell whether a text will fit.

#include <string_view>

#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK {

/// Takes ASCII characters to be as wide as those of Inter, and others to be as wide as wide ones of their
/// script are on average. Lines break at spaces, behind hyphens, dashes and slashes, and where a soft
/// hyphen or a zero-width space stands.
class EstimatedText : public platform::TextMeasurer {
 public:
  explicit EstimatedText(double scale) : scale_(scale) {}

  platform::Size measure(std::string_view text, const platform::Font& font, double width) override;
  double widestWord(std::string_view text, const platform::Font& font) override;

 private:
  const double scale_;
};

}  // namespace TalvoConsentSDK
