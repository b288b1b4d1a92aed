#include "adapters/qt/QtText.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>

#include "TalvoConsentSDK/ui/view/TextDirection.h"

namespace TalvoConsentSDK {

namespace {

constexpr double leastShare = 2.0 / 3;   // of the font's size, for the sake of a long word
constexpr double unlimited = 1'000'000;  // wider than any line; Qt's layouts take no infinity

QFont::Weight weight(FontWeight weight) {
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

// Inter, and fonts that look well beside it for scripts it lacks, as far as they are installed.
const QStringList& families() {
  static const QStringList list = [] {
    const QStringList installed = QFontDatabase::families();
    QStringList found;
    for (const char* wanted : {"Inter", "Noto Sans Arabic", "Noto Sans Hebrew"}) {
      if (installed.contains(QLatin1String(wanted))) found << QLatin1String(wanted);
    }
    return found << QFontDatabase::systemFont(QFontDatabase::GeneralFont).families();
  }();
  return list;
}

double widestWord(const QString& text, const QFont& font) {
  const QFontMetricsF metrics(font);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
  double widest = 0;
  qsizetype begin = 0;
  for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
    widest = std::max(widest, metrics.horizontalAdvance(text.mid(begin, end - begin).trimmed()));
    begin = end;
  }
  return std::ceil(widest);
}

}  // namespace

QString toQString(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QFont toQFont(const Font& font, const TextSettings& settings) {
  QFont result(families());
  result.setPixelSize(std::max(1, static_cast<int>(std::lround(font.size() * settings.scale))));
  result.setWeight(weight(font.weight));
  result.setHintingPreference(QFont::PreferNoHinting);
  return result;
}

BrokenText::BrokenText(std::string_view text, const Font& font, const TextSettings& settings, double width,
                       Qt::Alignment alignment)
    : lineHeight_(font.lineHeight() * settings.scale) {
  QString content = toQString(text);
  content.replace(QLatin1Char('\n'), QChar::LineSeparator);
  layout_.setText(content);
  layout_.setFont(toQFont(font, settings));
  QTextOption option(alignment | Qt::AlignAbsolute);
  option.setTextDirection(dominantDirection(text) == LayoutDirection::rightToLeft ? Qt::RightToLeft
                                                                                  : Qt::LeftToRight);
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  layout_.setTextOption(option);
  layout_.setCacheEnabled(true);

  breakLines(width);
  if (!isBrokenInAWord()) return;
  const double room = std::floor(width);  // drawn in a frame of whole points, it shrinks as much again
  const double share = room / TalvoConsentSDK::widestWord(content, layout_.font());
  if (share < leastShare || share >= 1) return;
  QFont smaller = layout_.font();
  smaller.setPixelSize(std::max(1, static_cast<int>(smaller.pixelSize() * share)));
  layout_.setFont(smaller);
  lineHeight_ *= share;
  leastWidth_ = room;
  breakLines(width);
}

void BrokenText::breakLines(double width) {
  layout_.beginLayout();
  double top = 0;
  for (QTextLine line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
    line.setLineWidth(std::min(width, unlimited));
    line.setPosition({0, top + (lineHeight_ - line.height()) / 2});
    top += lineHeight_;
  }
  layout_.endLayout();
}

bool BrokenText::isBrokenInAWord() const {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, layout_.text());
  for (int i = 0; i + 1 < layout_.lineCount(); ++i) {
    const QTextLine line = layout_.lineAt(i);
    finder.setPosition(line.textStart() + line.textLength());
    if (!finder.isAtBoundary()) return true;
  }
  return false;
}

Size BrokenText::size() {
  double widest = leastWidth_;
  const int lines = layout_.lineCount();
  for (int i = 0; i < lines; ++i) widest = std::max(widest, layout_.lineAt(i).naturalTextWidth());
  widest = std::ceil(widest);
  // What leans out of a line's last letter counts when lines are broken, but not in a line's width.
  for (breakLines(widest); layout_.lineCount() > lines; breakLines(widest)) ++widest;
  return {widest, lineHeight_ * std::max(1, lines)};
}

void BrokenText::draw(QPainter& painter, const QColor& color, bool isUnderlined) const {
  painter.setPen(color);
  layout_.draw(&painter, {0, 0});
  if (!isUnderlined) return;
  const QFontMetricsF metrics(layout_.font());
  for (int i = 0; i < layout_.lineCount(); ++i) {
    const QTextLine line = layout_.lineAt(i);
    const QRectF used = line.naturalTextRect();
    const double y = line.y() + line.ascent() + metrics.underlinePos();
    painter.fillRect(QRectF(used.x(), y, used.width(), std::max(1.0, metrics.lineWidth())), color);
  }
}

Size QtTextMeasurer::measure(std::string_view text, const Font& font, double width) {
  const Size size = BrokenText(text, font, settings_, width).size();
  return {std::min(size.width, std::max(width, 0.0)), size.height};
}

double QtTextMeasurer::widestWord(std::string_view text, const Font& font) {
  return TalvoConsentSDK::widestWord(toQString(text), toQFont(font, settings_));
}

}  // namespace TalvoConsentSDK
