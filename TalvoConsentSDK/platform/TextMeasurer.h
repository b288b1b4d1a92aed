#pragma once

// The seam for text metrics: layout asks it how large a text will be when the window draws it.

#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/base/Geometry.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Measures text at the user's text size. Main thread only.
class TextMeasurer {
 public:
  virtual ~TextMeasurer() = default;

  /// Returns the size of UTF-8 `text`, wrapped between words where a line would be wider than `width`. If
  /// `width` is infinite, lines end only at newlines. A word wider than `width` is split, or the text is
  /// drawn smaller to avoid that. The returned size is at most `width` wide.
  virtual Size measure(std::string_view text, const Font& font, double width) = 0;

  /// Returns the smallest width at which no word of `text` has to be split or drawn smaller.
  virtual double widestWord(std::string_view text, const Font& font) = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
