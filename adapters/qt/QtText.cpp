#include "adapters/qt/QtText.h"

#include <algorithm>
#include <cmath>

#include "adapters/qt/ScriptFonts.h"
#include "adapters/qt/WrappedText.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

QFont::Weight toQtWeight(FontWeight weight) {
  switch (weight) {
    case FontWeight::regular:
      return QFont::Normal;
    case FontWeight::medium:
      return QFont::Medium;
    case FontWeight::semibold:
      return QFont::DemiBold;
    case FontWeight::bold:
      return QFont::Bold;
  }
  return QFont::Normal;
}

}  // namespace

QString toQString(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QFont toQFont(const Font& font, const TextSettings& settings) {
  QFont result(generalFamilies());
  result.setPixelSize(std::max(1, static_cast<int>(std::lround(font.size() * settings.scale))));
  result.setWeight(toQtWeight(font.weight));
  result.setHintingPreference(QFont::PreferNoHinting);
  return result;
}

Size QtTextMeasurer::measure(std::string_view text, const Font& font, double width) {
  const Size size = WrappedText(text, font, settings_, width).size();
  return {std::min(size.width, std::max(width, 0.0)), size.height};
}

double QtTextMeasurer::widestWord(std::string_view text, const Font& font) {
  return widestUnbreakableRun(toQString(text), toQFont(font, settings_));
}

}  // namespace TalvoConsentSDK
