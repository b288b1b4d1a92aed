#pragma once

// Fonts, and a measurer for text drawn with them.

#include <QFont>
#include <QString>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// The user's settings for text.
struct TextSettings {
  double scale = 1;  // multiplies every font size; from 1 to about 3
  friend bool operator==(const TextSettings&, const TextSettings&) = default;
};

TALVO_EXPORT QString toQString(std::string_view utf8);

/// Returns a font with these families, in order of preference: Inter, Noto Sans Arabic, Noto Sans Hebrew,
/// Noto Color Emoji, the system's own. Families that are not installed are left out.
TALVO_EXPORT QFont toQFont(const platform::Font& font, const TextSettings& settings);

class QtTextMeasurer : public platform::TextMeasurer {
 public:
  explicit QtTextMeasurer(const TextSettings& settings) : settings_(settings) {}

  platform::Size measure(std::string_view text, const platform::Font& font, double width) override;
  double widestWord(std::string_view text, const platform::Font& font) override;

 private:
  const TextSettings settings_;
};

}  // namespace TalvoConsentSDK
