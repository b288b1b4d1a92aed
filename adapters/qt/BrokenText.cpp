#include "adapters/qt/BrokenText.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>
#include <deque>
#include <mutex>
#include <tuple>

#include "TalvoConsentSDK/view/TextDirection.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double minShare = 2.0 / 3;     // of the font's size, for the sake of a long word
constexpr double unlimited = 1'000'000;  // wider than any line; Qt's layouts take no infinity

// Lengths in UTF-16 units. Qt's time for one layout grows with the square of its length where no line can end
// at a blank.
constexpr qsizetype longText = 4096;
constexpr qsizetype pieceLength = 1024;
constexpr qsizetype maxPieceLength = 4 * pieceLength;  // where few lines can end
constexpr qsizetype maxContext = pieceLength / 4;
constexpr int unsettledLines = 2;  // at the end of a piece: they may break otherwise with what follows
constexpr qsizetype maxWordLength = 1000;
constexpr double longestLine = 10'000;

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

double widestWord(const QString& text, const QFont& font) {
  const QFontMetricsF metrics(font);
  QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
  double widest = 0;
  qsizetype begin = 0;
  for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
    widest = std::max(
        widest, metrics.horizontalAdvance(text.mid(begin, std::min(end - begin, maxWordLength)).trimmed()));
    begin = end;
  }
  return std::ceil(widest);
}

// How the last few long texts are broken, since each is measured and then drawn, a part at a time. Windows
// may draw on threads of their own.
class BrokenText::Cache {
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

BrokenText::BrokenText(std::string_view text, const Font& font, const TextSettings& settings, double width,
                       Qt::Alignment alignment)
    : content_(toQString(text).replace(QLatin1Char('\n'), QChar::LineSeparator)) {
  const LayoutDirection direction = dominantDirection(text);
  layout_.setTextOption(textOption(direction, alignment));
  layout_.setCacheEnabled(true);
  const QFont usual = toQFont(font, settings);
  const double lineHeight = font.lineHeight() * settings.scale;
  const auto make = [&] { return broken(usual, lineHeight, width); };
  if (!isLong()) {
    lines_ = std::make_shared<const Lines>(make());
    return;
  }
  lines_ = Cache::get({content_.size(), qHash(content_, 1), qHash(content_, 2), usual.key(), lineHeight,
                       width, static_cast<int>(direction)},
                      make);
}

bool BrokenText::isLong() const {
  return content_.size() > longText;
}

BrokenText::Lines BrokenText::broken(const QFont& font, double lineHeight, double width) const {
  Lines lines{font, lineHeight};
  breakLines(lines, width);
  if (!lines.breaksAWord) return lines;
  const double room = std::floor(width);  // drawn in a frame of whole points, it shrinks as much again
  const double share = room / TalvoConsentSDK::widestWord(content_, lines.font);
  if (share < minShare || share >= 1) return lines;
  lines.font.setPixelSize(std::max(1, static_cast<int>(lines.font.pixelSize() * share)));
  lines.height *= share;
  lines.minWidth = room;
  breakLines(lines, width);
  return lines;
}

void BrokenText::breakLines(Lines& lines, double width) const {
  lines.width = std::min(width, isLong() ? longestLine : unlimited);
  lines.pieces.clear();
  lines.count = 0;
  lines.widest = lines.minWidth;
  lines.breaksAWord = false;
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
    lines.breaksAWord = lines.breaksAWord || breaksAWord(piece, firstLine);
    if (piece.end == content_.size()) return;
  }
}

// A piece that ends before the text does is laid out with two lines too many, which are left to the next
// piece.
BrokenText::Piece BrokenText::nextPiece(const Lines& lines, qsizetype begin, qsizetype layoutBegin) const {
  Piece piece{layoutBegin, content_.size(), begin, content_.size(), lines.count};
  if (!isLong()) return piece;
  for (qsizetype length = pieceLength;; length *= 2) {
    piece.layoutEnd = std::min(content_.size(), begin + length);
    while (piece.layoutEnd < content_.size() && piece.layoutEnd > begin + length / 2 &&
           continuesCharacter(content_[piece.layoutEnd])) {
      --piece.layoutEnd;
    }
    int firstLine = layOut(lines, piece);
    if (firstLine < 0) {  // the lines before are broken otherwise without what stands before them
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

// Answers the index of the piece's first line in the layout, or -1 where no line begins there.
int BrokenText::layOut(const Lines& lines, const Piece& piece) const {
  const bool isSameText = laidOut_.layoutBegin == piece.layoutBegin && laidOut_.layoutEnd == piece.layoutEnd;
  const bool isSameFont = layout_.font() == lines.font;
  if (isSameText && isSameFont && laidOutWidth_ == lines.width && laidOut_.begin == piece.begin) {
    return laidOutFirstLine_;
  }
  if (!isSameText) layout_.setText(content_.mid(piece.layoutBegin, piece.layoutEnd - piece.layoutBegin));
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

bool BrokenText::breaksAWord(const Piece& piece, int firstLine) const {
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

Size BrokenText::size() {
  const int count = lines_->count;
  const double height = lines_->height * std::max(1, count);
  // What leans out of a line's last letter counts when lines are broken, but not in a line's width.
  if (isLong()) return {std::min(lines_->width, std::ceil(lines_->widest + lines_->height)), height};
  Lines lines = *lines_;
  double widest = std::ceil(lines.widest);
  for (breakLines(lines, widest); lines.count > count; breakLines(lines, widest)) ++widest;
  lines_ = std::make_shared<const Lines>(std::move(lines));
  return {widest, height};
}

void BrokenText::draw(QPainter& painter, const QColor& color, bool isUnderlined, double top,
                      double bottom) const {
  painter.setPen(color);
  const QFontMetricsF metrics(lines_->font);
  const double height = lines_->height;  // letters reach up to as far beyond their lines
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
