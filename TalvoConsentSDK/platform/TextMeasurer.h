#pragma once

// The seam for text metrics: layout asks it how large a text will be when the window draws it.

#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/base/Geometry.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Measures text at the person's text size. Main thread.
class TextMeasurer {
 public:
  virtual ~TextMeasurer() = default;

  /// The size of UTF-8 `text`, wrapped between words where a line would be wider than `width` (infinity: only
  /// at newlines). A word wider than that is broken inside, or the text drawn smaller to avoid it. The answer
  /// is at most `width` wide.
  virtual Size measure(std::string_view text, const Font& font, double width) = 0;

  /// The width below which a word of `text` would have to be broken inside, or drawn smaller.
  virtual double widestWord(std::string_view text, const Font& font) = 0;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
