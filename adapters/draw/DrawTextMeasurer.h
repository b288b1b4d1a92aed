#pragma once

// Measures texts with the lines that are drawn.

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "TalvoConsentSDK/platform/TextMeasurer.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

#include "adapters/draw/Paragraph.h"

namespace TalvoConsentSDK {

class DrawTextMeasurer : public platform::TextMeasurer {
 public:
  DrawTextMeasurer(std::shared_ptr<Paragraphs> paragraphs, double textScale)
      : paragraphs_(std::move(paragraphs)), textScale_(textScale) {}

  platform::Size measure(std::string_view text, const platform::Font& font, double width) override {
    const platform::Size size = paragraphs_->wrapped(text, font, textScale_, width)->size();
    return {std::min(size.width, std::max(width, 0.0)), size.height};
  }

  double widestWord(std::string_view text, const platform::Font& font) override {
    const auto paragraph = paragraphs_->wrapped(text, font, textScale_, view::infinity);
    return std::ceil(paragraph->widestWord());
  }

 private:
  const std::shared_ptr<Paragraphs> paragraphs_;
  const double textScale_;
};

}  // namespace TalvoConsentSDK
