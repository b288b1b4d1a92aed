#include "adapters/qt/WrappedText.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>
#include <deque>
#include <mutex>
#include <tuple>

#include "TalvoConsentSDK/view/Look.h"
#include "TalvoConsentSDK/view/TextDirection.h"

#include "adapters/qt/ScriptFonts.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double unlimited = 1'000'000;  // wider than any line; Qt's layouts do not accept infinity

// Lengths are in UTF-16 units. If a text has no blanks at which a line can end, the time that Qt takes for
// one layout grows with the square of the text's length.
constexpr qsizetype longText = 4096;
constexpr qsizetype pieceLength = 1024;
constexpr qsizetype maxPieceLength = 4 * pieceLength;  // for a text with few possible line ends
constexpr qsizetype maxContext = pieceLength / 4;
constexpr int unsettledLines = 2;  // the last lines of a layout, which may wrap differently if text follows
constexpr qsizetype maxWordLength = 1000;
constexpr double longestLine = 10'000;

// Qt makes a line wider by what its last letter extends beyond its width. For a letter with a combining mark
// it takes the glyph that is drawn first, which in scripts of India is a vowel sign that extends over the
// letter: the line would be several points too wide. An invisible character at the end avoids that. The fonts
// of these scripts contain it.
QString withInvisibleEnd(QString text) {
  constexpr QChar zeroWidthSpace(0x200B);
  const bool endsInMark = !text.isEmpty() && text.back().isMark();
  return endsInMark && !scriptFormats(text.back()).isEmpty() ? text + zeroWidthSpace : text;
}

bool continuesCharacter(QChar c) {
  return c.isLowSurrogate() || c.isMark();
}

QTextOption textOption(LayoutDirection direction, Qt::Alignment alignment) {
  QTextOption option(alignment | Qt::AlignAbsolute);
  option.setTextDirection(direction == LayoutDirection::rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  return option;
}

}  // namespace

double widestUnbreakableRun(const QString& text, const QFont& font) {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
  double widest = 0;
  qsizetype begin = 0;
  for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
    const QString word = text.mid(begin, std::min(end - begin, maxWordLength)).trimmed();
    widest = std::max(widest, QFontMetricsF(fontFor(word, font)).horizontalAdvance(word));
    begin = end;
  }
  return std::ceil(widest);
}

// Caches the lines of the last few long texts, because each text is measured first and then drawn part by
// part. Locked, because windows may draw on threads of their own.
class WrappedText::Cache {
 public:
  using Key = std::tuple<qsizetype, std::size_t, std::size_t, QString, double, double, int>;

  template <class Make>
  static std::shared_ptr<const Lines> get(const Key& key, Make make) {
    static std::mutex lock;
    static std::deque<std::pair<Key, std::shared_ptr<const Lines>>> entries;
    const std::scoped_lock guard(lock);
    for (const auto& [known, lines] : entries) {
      if (known == key) return lines;
    }
    entries.emplace_front(key, std::make_shared<const Lines>(make()));
    constexpr std::size_t maxEntries = 8;
    if (entries.size() > maxEntries) entries.pop_back();
    return entries.front().second;
  }
};

WrappedText::WrappedText(std::string_view text, const Font& font, const TextSettings& settings, double width,
                         Qt::Alignment alignment)
    : content_(withInvisibleEnd(toQString(text).replace(QLatin1Char('\n'), QChar::LineSeparator))) {
  const LayoutDirection direction = dominantDirection(text);
  layout_.setTextOption(textOption(direction, alignment));
  layout_.setCacheEnabled(true);
  const QFont fullSizeFont = toQFont(font, settings);
  const double lineHeight = font.lineHeight() * settings.scale;
  const auto make = [&] { return wrap(fullSizeFont, lineHeight, width); };
  if (!isLong()) {
    lines_ = std::make_shared<const Lines>(make());
    return;
  }
  lines_ = Cache::get({content_.size(), qHash(content_, 1), qHash(content_, 2), fullSizeFont.key(),
                       lineHeight, width, static_cast<int>(direction)},
                      make);
}

bool WrappedText::isLong() const {
  return content_.size() > longText;
}

WrappedText::Lines WrappedText::wrap(const QFont& font, double lineHeight, double width) const {
  Lines lines{font, lineHeight};
  breakLines(lines, width);
  if (!lines.splitsWord) return lines;
  // Whole points, so that the text shrinks by the same amount when it is drawn in a frame of whole points.
  const double room = std::floor(width);
  const double share = room / widestUnbreakableRun(content_, lines.font);
  if (share < look::minTextShare || share >= 1) return lines;
  lines.font.setPixelSize(std::max(1, static_cast<int>(lines.font.pixelSize() * share)));
  lines.height *= share;
  lines.minWidth = room;
  breakLines(lines, width);
  return lines;
}

void WrappedText::breakLines(Lines& lines, double width) const {
  lines.width = std::min(width, isLong() ? longestLine : unlimited);
  lines.pieces.clear();
  lines.count = 0;
  lines.widest = lines.minWidth;
  lines.splitsWord = false;
  qsizetype layoutBegin = 0;
  for (qsizetype begin = 0;;) {
    const Piece piece = nextPiece(lines, begin, layoutBegin);
    lines.pieces.push_back(piece);
    const int firstLine = layOut(lines, piece);
    layoutBegin = begin = piece.end;
    for (int i = firstLine; i < layout_.lineCount(); ++i) {
      const QTextLine line = layout_.lineAt(i);
      const qsizetype lineBegin = piece.layoutBegin + line.textStart();
      if (lineBegin >= piece.end && piece.end < content_.size()) break;
      ++lines.count;
      lines.widest = std::max(lines.widest, line.naturalTextWidth());
      if (piece.end - lineBegin <= maxContext) layoutBegin = std::min(layoutBegin, lineBegin);
    }
    lines.splitsWord = lines.splitsWord || splitsWord(piece, firstLine);
    if (piece.end == content_.size()) return;
  }
}

// If the text continues after a piece, the piece is laid out with two extra lines, or fewer if its lines are
// very long. The extra lines belong to the next piece.
WrappedText::Piece WrappedText::nextPiece(const Lines& lines, qsizetype begin, qsizetype layoutBegin) const {
  Piece piece{layoutBegin, content_.size(), begin, content_.size(), lines.count};
  if (!isLong()) return piece;
  for (qsizetype length = pieceLength;; length *= 2) {
    piece.layoutEnd = std::min(content_.size(), begin + length);
    while (piece.layoutEnd < content_.size() && piece.layoutEnd > begin + length / 2 &&
           continuesCharacter(content_[piece.layoutEnd])) {
      --piece.layoutEnd;
    }
    int firstLine = layOut(lines, piece);
    if (firstLine < 0) {  // the lines before the piece wrapped differently than in the whole text
      piece.layoutBegin = begin;
      firstLine = layOut(lines, piece);
    }
    if (piece.layoutEnd == content_.size()) return piece;
    const int count = layout_.lineCount() - firstLine;
    if (count <= unsettledLines && length < maxPieceLength) continue;
    const QTextLine last = layout_.lineAt(firstLine + std::max(1, count - unsettledLines) - 1);
    piece.end = piece.layoutBegin + last.textStart() + last.textLength();
    return piece;
  }
}

// Returns the index of the piece's first line in the layout, or -1 if no line begins where the piece does.
int WrappedText::layOut(const Lines& lines, const Piece& piece) const {
  const bool isSameText = laidOut_.layoutBegin == piece.layoutBegin && laidOut_.layoutEnd == piece.layoutEnd;
  const bool isSameFont = layout_.font() == lines.font;
  if (isSameText && isSameFont && laidOutWidth_ == lines.width && laidOut_.begin == piece.begin) {
    return laidOutFirstLine_;
  }
  if (!isSameText) {
    layout_.setText(content_.mid(piece.layoutBegin, piece.layoutEnd - piece.layoutBegin));
    layout_.setFormats(scriptFormats(layout_.text()));
  }
  if (!isSameFont) layout_.setFont(lines.font);
  int firstLine = -1;
  layout_.beginLayout();
  for (QTextLine line = layout_.createLine(); line.isValid(); line = layout_.createLine()) {
    line.setLineWidth(lines.width);
    if (piece.layoutBegin + line.textStart() == piece.begin && firstLine < 0) firstLine = line.lineNumber();
    const int number = piece.firstLine + line.lineNumber() - std::max(firstLine, 0);
    line.setPosition({0, number * lines.height + (lines.height - line.height()) / 2});
  }
  layout_.endLayout();
  laidOut_ = piece;
  laidOutWidth_ = lines.width;
  return laidOutFirstLine_ = firstLine;
}

bool WrappedText::splitsWord(const Piece& piece, int firstLine) const {
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, layout_.text());
  for (int i = firstLine; i + 1 < layout_.lineCount(); ++i) {
    const QTextLine line = layout_.lineAt(i);
    const int end = line.textStart() + line.textLength();
    finder.setPosition(end);
    if (!finder.isAtBoundary()) return true;
    if (piece.layoutBegin + end >= piece.end) break;
  }
  return false;
}

Size WrappedText::size() {
  const int count = lines_->count;
  const double height = lines_->height * std::max(1, count);
  // When Qt wraps a line, it includes the overhang of the last letter; naturalTextWidth does not.
  if (isLong()) return {std::min(lines_->width, std::ceil(lines_->widest + lines_->height)), height};
  Lines lines = *lines_;
  const auto starts = [this] {
    std::vector<int> found;
    for (int i = 0; i < layout_.lineCount(); ++i) found.push_back(layout_.lineAt(i).textStart());
    return found;
  };
  layOut(lines, lines.pieces.front());
  const std::vector<int> wanted = starts();
  double widest = std::ceil(lines.widest);
  for (breakLines(lines, widest); starts() != wanted; breakLines(lines, widest)) ++widest;
  lines_ = std::make_shared<const Lines>(std::move(lines));
  return {widest, height};
}

void WrappedText::draw(QPainter& painter, const QColor& color, bool isUnderlined, double top,
                       double bottom) const {
  painter.setPen(color);
  const QFontMetricsF metrics(lines_->font);
  const double height = lines_->height;  // also the most by which letters extend beyond their line
  for (auto piece = lines_->pieces.begin(); piece != lines_->pieces.end(); ++piece) {
    const bool isLast = std::next(piece) == lines_->pieces.end();
    const int end = isLast ? lines_->count : std::next(piece)->firstLine;
    if ((end + 1) * height < top || (piece->firstLine - 1) * height > bottom) continue;
    const int firstLine = layOut(*lines_, *piece);
    for (int i = 0; i < end - piece->firstLine; ++i) {
      const QTextLine line = layout_.lineAt(firstLine + i);
      const double lineTop = (piece->firstLine + i) * height;
      if (lineTop + 2 * height < top || lineTop - height > bottom) continue;
      line.draw(&painter, {0, 0});
      if (!isUnderlined) continue;
      const QRectF used = line.naturalTextRect();
      const double y = line.y() + line.ascent() + metrics.underlinePos();
      painter.fillRect(QRectF(used.x(), y, used.width(), std::max(1.0, metrics.lineWidth())), color);
    }
  }
}

}  // namespace TalvoConsentSDK
