#pragma once

// A text as a sequence of letters in fonts, before it is wrapped into lines. Lengths are in ems, because
// letters are not hinted: the same shape serves all sizes. At a size, the width of each letter is cut to 1/64
// of a point, as other text engines do it: a text is then as wide as in a toolkit's window.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/platform/Application.h"

#include "adapters/draw/FontSet.h"
#include "adapters/draw/TextAnalysis.h"

namespace TalvoConsentSDK {

/// A letter to draw. `x` and `y` are the place of its origin: from the line's left edge, and down from its
/// baseline.
struct PlacedGlyph {
  const FontFace* face = nullptr;
  std::uint32_t glyph = 0;
  double x = 0;
  double y = 0;
};

/// A line from left to right. Ascent and descent are those of the tallest font in it.
struct ShapedLine {
  std::vector<PlacedGlyph> glyphs;
  double width = 0;
  double ascent = 0;
  double descent = 0;
};

/// Main thread only.
class ShapedText {
 public:
  ShapedText(std::string_view utf8, platform::FontWeight weight, FontSet& fonts, const std::string& language,
             const LineBreaker& breaker);

  std::size_t size() const { return text_.codes.size(); }
  bool isBlankAt(std::size_t index) const { return isBlank(text_.codes[index]); }
  LineBreak breakBefore(std::size_t index) const { return breaks_[index]; }

  /// Whether a line can begin here without splitting what users perceive as one character.
  bool isCharacterStart(std::size_t index) const { return index >= size() || isStart_[index]; }

  /// The place of each character's left edge if all stand on one line, in points. The last one is the end.
  std::shared_ptr<const std::vector<double>> edges(double fontSize) const;

  /// How far a character reaches beyond its own width, in whole points.
  double overhang(std::size_t index, double fontSize) const;

  /// Shapes the characters from `begin` to `end` as a line of their own. They must contain no line break.
  ShapedLine line(std::size_t begin, std::size_t end, double fontSize) const;

  const FontFace* font() const { return font_; }

 private:
  // Characters of one direction, script and font.
  struct Run {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::int8_t level = 0;
    std::uint32_t script = 0;
    const FontFace* face = nullptr;
  };
  struct Shape;

  void findRuns(FontSet& fonts, platform::FontWeight weight);
  void measure();
  Shape shape(const Run& run, std::size_t begin, std::size_t end) const;

  const Characters text_;
  const std::string language_;
  const FontFace* const font_;
  const double space_;  // the width of a blank
  std::vector<LineBreak> breaks_;
  std::vector<Run> runs_;
  std::vector<bool> isStart_;
  std::vector<double> advances_;
  std::vector<std::uint32_t> lastGlyphs_;  // of each character
  mutable double edgesSize_ = 0;           // the font size for which the edges were asked for last
  mutable std::shared_ptr<const std::vector<double>> edges_;
};

}  // namespace TalvoConsentSDK
