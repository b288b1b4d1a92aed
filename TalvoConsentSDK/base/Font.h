#pragma once

// How text looks: the named styles of a phone, which the toolkit scales with the person's text size.

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

enum class FontWeight { regular, medium, semibold, bold };

/// The text styles the banner uses, by their standard sizes in points at the default text size.
enum class TextStyle { headline, body, subheadline, footnote };

/// A style at a weight.
struct Font {
  TextStyle style = TextStyle::body;
  FontWeight weight = FontWeight::regular;

  /// Height of the letters' em square, in points, at text scale 1.
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

  /// Distance of two baselines, in points, at text scale 1.
  constexpr double lineHeight() const { return style == TextStyle::footnote ? 18 : size() + 5; }

  friend bool operator==(const Font&, const Font&) = default;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
