#pragma once

// Texts wrapped into lines. Measuring and drawing use the same lines.

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/Geometry.h"

#include "adapters/draw/ShapedText.h"

namespace TalvoConsentSDK {

/// A text wrapped into lines of at most a width in points. Shrinks the text by up to a third if that avoids
/// splitting a word.
class Paragraph {
 public:
  Paragraph(std::shared_ptr<const ShapedText> text, const platform::Font& font, double textScale,
            double width);

  /// The size of the lines, in whole points.
  platform::Size size() const;

  /// The width of the widest part without an allowed line break, such as a word. Only the first 1,000
  /// characters of a part count.
  double widestWord() const;

  double fontSize() const { return fontSize_; }      // in points
  double lineHeight() const { return lineHeight_; }  // in points
  std::size_t lineCount() const { return lines_.size(); }

  /// Shapes a line. The last lines that were asked for are kept.
  const ShapedLine& line(std::size_t index) const;

  const ShapedText& text() const { return *text_; }

 private:
  struct Line {
    std::size_t begin = 0;
    std::size_t end = 0;  // without the blanks after it
  };

  void setFontSize(double size);
  double widthOf(const Line& line) const { return (*edges_)[line.end] - (*edges_)[line.begin]; }
  void breakLines(double width);
  double reachOf(const Line& line) const;
  std::pair<Line, std::size_t> nextLine(std::size_t begin, double room);

  const std::shared_ptr<const ShapedText> text_;
  double fontSize_ = 0;
  std::shared_ptr<const std::vector<double>> edges_;  // of the characters, at this font size
  double lineHeight_ = 0;
  double minWidth_ = 0;
  double widest_ = 0;
  bool splitsWord_ = false;
  std::vector<Line> lines_;
  mutable std::map<std::size_t, ShapedLine> shaped_;
};

/// Keeps the texts that were wrapped last, because each is measured at several widths and then drawn in each
/// frame.
class Paragraphs {
 public:
  Paragraphs(std::shared_ptr<FontSet> fonts, LineBreaker breaker)
      : fonts_(std::move(fonts)), breaker_(std::move(breaker)) {}

  std::shared_ptr<const Paragraph> wrapped(std::string_view text, const platform::Font& font,
                                           double textScale, double width);

  void setLanguage(const std::string& language);

 private:
  using Key = std::tuple<std::string, platform::FontWeight>;
  struct Entry {
    std::shared_ptr<const ShapedText> shaped;
    std::map<std::tuple<platform::TextStyle, double, double>, std::shared_ptr<const Paragraph>> paragraphs;
    std::list<const Key*>::iterator age;
  };

  Entry& entry(std::string_view text, platform::FontWeight weight);

  const std::shared_ptr<FontSet> fonts_;
  const LineBreaker breaker_;
  std::string language_;
  std::map<Key, Entry> entries_;
  std::list<const Key*> ages_;  // the texts used last come first
  std::size_t characters_ = 0;
};

}  // namespace TalvoConsentSDK
