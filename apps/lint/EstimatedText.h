#pragma once

// Estimates text metrics without a toolkit, closely enough to tell whether a text will fit.

#include <string_view>

#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK {

/// Takes the width of an ASCII character from the font Inter. Takes any other character to be as wide as the
/// characters of its script are on average; most combining marks take up no space. Lines break at spaces and
/// line feeds, after hyphens, dashes and slashes, at soft hyphens and zero-width spaces, and between
/// ideographs. Thai, Lao, Burmese and Khmer, which have no blanks between words, break between syllables.
class EstimatedText : public platform::TextMeasurer {
 public:
  explicit EstimatedText(double scale) : scale_(scale) {}

  platform::Size measure(std::string_view text, const platform::Font& font, double width) override;
  double widestWord(std::string_view text, const platform::Font& font) override;

 private:
  const double scale_;
};

}  // namespace TalvoConsentSDK
