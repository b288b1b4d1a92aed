#pragma once

// An sRGB colour, and the rule that reads one from a customization's text.

#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// sRGB, not premultiplied, each channel from 0 to 1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;

  static constexpr Color black() { return {}; }
  static constexpr Color clear() { return {0, 0, 0, 0}; }

  constexpr Color withAlpha(double newAlpha) const { return {red, green, blue, newAlpha}; }
  friend bool operator==(const Color&, const Color&) = default;
};

/// Reads hexadecimal colour text: 3 digits (RGB), 6 (RRGGBB) or 8 (AARRGGBB, alpha first), with anything
/// before and after it that Unicode calls neither letter, mark nor number, such as a number sign or a
/// no-break space. Unreadable text is opaque black. A character outside ASCII counts as one character and is
/// never a digit; a leading "0x" is skipped, though it counts.
TALVO_EXPORT Color colorFromText(std::string_view text);

/// Whether `text` is such a text to its last digit; the rule above makes something of others too.
TALVO_EXPORT bool isColorText(std::string_view text);

}  // namespace platform
}  // namespace TalvoConsentSDK
