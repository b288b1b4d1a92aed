#pragma once

// An sRGB colour, and how it is read from a customization's text.

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

/// Reads a hexadecimal colour: 3 digits (RGB), 6 (RRGGBB) or 8 (AARRGGBB, alpha first). Ignores characters
/// before and after it, such as "#" or a no-break space, that Unicode does not class as a letter, a mark or a
/// number. A text of any other length is opaque black. Every remaining character counts towards the length,
/// including characters outside ASCII and a leading "0x". The "0x" is then skipped, and reading stops at the
/// first character that is not an ASCII hexadecimal digit.
TALVO_EXPORT Color colorFromText(std::string_view text);

/// Whether `text`, apart from the leading and trailing characters that `colorFromText` ignores, is exactly 3,
/// 6 or 8 hexadecimal digits. `colorFromText` is more lenient: it returns a colour for every text.
TALVO_EXPORT bool isColorText(std::string_view text);

}  // namespace platform
}  // namespace TalvoConsentSDK
