#pragma once

// Fonts, and the measurer of what is drawn with them.

#include <QFont>
#include <QString>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// How the person wants text to be.
struct TextSettings {
  double scale = 1;  // of every font, from 1 to about 3
};

TALVO_EXPORT QString toQString(std::string_view utf8);

/// Inter where it is installed, else the system's own font.
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
