#pragma once

// Text broken into lines: what is measured is what is drawn.

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

/// The width of the widest part of a text that no line may end in; of what is longer than any line, that of
/// its beginning.
double widestWord(const QString& text, const QFont& font);

/// A text broken into lines within `width` points; infinity breaks at newlines only. Where a word would be
/// broken inside that need not be if the text were up to a third smaller, it is.
///
/// A text of more than 4,096 characters is laid out in pieces, so that its time grows with its length; its
/// lines are at most 10,000 points wide.
class BrokenText {
 public:
  BrokenText(std::string_view text, const platform::Font& font, const TextSettings& settings, double width,
             Qt::Alignment alignment = Qt::AlignLeft);

  /// In whole points, but at most the width; breaks the text into as many lines again, as drawing it in a
  /// frame of this size does.
  platform::Size size();

  /// Draws the lines that are seen between `top` and `bottom`.
  void draw(QPainter& painter, const QColor& color, bool isUnderlined, double top = 0,
            double bottom = std::numeric_limits<double>::infinity()) const;

 private:
  /// Lines that are laid out at once, together with some lines before them, so that they are shaped as within
  /// the whole text, and with some of what follows. Positions are those of the text.
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
    bool breaksAWord = false;
  };
  class Cache;

  bool isLong() const;
  Lines broken(const QFont& font, double lineHeight, double width) const;
  void breakLines(Lines& lines, double width) const;
  Piece nextPiece(const Lines& lines, qsizetype begin, qsizetype layoutBegin) const;
  int layOut(const Lines& lines, const Piece& piece) const;
  bool breaksAWord(const Piece& piece, int firstLine) const;

  const QString content_;
  std::shared_ptr<const Lines> lines_;
  mutable QTextLayout layout_;  // of the piece that was laid out last
  mutable Piece laidOut_{-1};
  mutable double laidOutWidth_ = -1;
  mutable int laidOutFirstLine_ = 0;
};

}  // namespace TalvoConsentSDK
