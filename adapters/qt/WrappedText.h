#pragma once

// Text wrapped into lines. Measuring and drawing use the same lines.

#include <QFont>
#include <QString>
#include <QTextLayout>
#include <limits>
#include <memory>
#include <vector>

#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/base/Geometry.h"

#include "adapters/qt/QtText.h"

namespace TalvoConsentSDK {

/// Returns the width of the widest run of text that contains no allowed line break, such as a word. Only the
/// first 1,000 characters of a run count.
double widestUnbreakableRun(const QString& text, const QFont& font);

/// A text wrapped into lines of at most `width` points; infinity breaks it at newlines only. Shrinks the text
/// by up to a third if that avoids splitting a word.
///
/// A text of more than 4,096 characters is laid out in pieces, so that the time grows in proportion to its
/// length. Its lines are at most 10,000 points wide.
class WrappedText {
 public:
  WrappedText(std::string_view text, const platform::Font& font, const TextSettings& settings, double width,
              Qt::Alignment alignment = Qt::AlignLeft);

  /// Returns the size of the wrapped text. The width is in whole points, except if a text of more than
  /// 4,096 characters takes up all of `width`. Wrapping the text to the returned width gives the same
  /// lines, so drawing it in a frame of this size does not cut it off.
  platform::Size size();

  /// Draws the lines that are visible between `top` and `bottom`.
  void draw(QPainter& painter, const QColor& color, bool isUnderlined, double top = 0,
            double bottom = std::numeric_limits<double>::infinity()) const;

 private:
  /// Lines that are laid out together. The layout also includes some lines before them and some text after
  /// them, so that the result is the same as if the whole text were laid out. All positions count from the
  /// start of the whole text.
  struct Piece {
    qsizetype layoutBegin = 0;
    qsizetype layoutEnd = 0;
    qsizetype begin = 0;
    qsizetype end = 0;
    int firstLine = 0;
  };

  struct Lines {
    QFont font;
    double height = 0;  // of one line
    double minWidth = 0;
    double width = 0;
    std::vector<Piece> pieces = {};
    int count = 0;
    double widest = 0;
    bool splitsWord = false;
  };
  class Cache;

  bool isLong() const;
  Lines wrap(const QFont& font, double lineHeight, double width) const;
  void breakLines(Lines& lines, double width) const;
  Piece nextPiece(const Lines& lines, qsizetype begin, qsizetype layoutBegin) const;
  int layOut(const Lines& lines, const Piece& piece) const;
  bool splitsWord(const Piece& piece, int firstLine) const;

  const QString content_;
  std::shared_ptr<const Lines> lines_;
  mutable QTextLayout layout_;  // the layout of the piece that was laid out last
  mutable Piece laidOut_{-1};
  mutable double laidOutWidth_ = -1;
  mutable int laidOutFirstLine_ = 0;
};

}  // namespace TalvoConsentSDK
