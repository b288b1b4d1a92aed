#pragma once

// Fonts and line breaking: what the measurer measures is what is drawn.

#include <QFont>
#include <QString>
#include <QTextLayout>

#include "TalvoConsentSDK/platform/Export.h"
#include "TalvoConsentSDK/platform/TextMeasurer.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// How the person wants text to be.
struct TextSettings {
  double scale = 1;  // of every font, from 1 to about 3
};

TALVO_EXPORT QString toQString(std::string_view utf8);

/// Inter where it is installed, else the system's own font.
TALVO_EXPORT QFont toQFont(const Font& font, const TextSettings& settings);

/// A text broken into lines within `width` points; infinity breaks at newlines only. Where a word would be
/// broken inside that need not be if the text were up to a third smaller, it is.
class BrokenText {
 public:
  BrokenText(std::string_view text, const Font& font, const TextSettings& settings, double width,
             Qt::Alignment alignment = Qt::AlignLeft);

  /// In whole points; breaks the text into as many lines again, as drawing it in a frame of this size does.
  Size size();

  void draw(QPainter& painter, const QColor& color, bool isUnderlined) const;

 private:
  void breakLines(double width);
  bool isBrokenInAWord() const;

  QTextLayout layout_;
  double lineHeight_;
  double leastWidth_ = 0;
};

class QtTextMeasurer : public TextMeasurer {
 public:
  explicit QtTextMeasurer(const TextSettings& settings) : settings_(settings) {}

  Size measure(std::string_view text, const Font& font, double width) override;
  double widestWord(std::string_view text, const Font& font) override;

 private:
  const TextSettings settings_;
};

}  // namespace TalvoConsentSDK
