#pragma once

// Fonts: the named text styles of a phone, which the toolkit scales with the user's text size.

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

enum class FontWeight { regular, medium, semibold, bold };

/// The text styles that the banner uses.
enum class TextStyle { headline, body, subheadline, footnote };

/// A text style with a weight.
struct Font {
  TextStyle style = TextStyle::body;
  FontWeight weight = FontWeight::regular;

  /// The font size, which is the height of the em square, in points at text scale 1.
  constexpr double size() const {
    switch (style) {
      case TextStyle::headline:
      case TextStyle::body:
        return 17;
      case TextStyle::subheadline:
        return 15;
      case TextStyle::footnote:
        return 13;
    }
    return 17;
  }

  /// The distance between two baselines, in points at text scale 1.
  constexpr double lineHeight() const { return style == TextStyle::footnote ? 18 : size() + 5; }

  friend bool operator==(const Font&, const Font&) = default;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
