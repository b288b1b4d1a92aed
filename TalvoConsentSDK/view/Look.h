#pragma once

// How the banner's shapes look, for every window that draws visuals: the curve of corners, the blur of
// shadows, the lines of symbols, and the parts of switches and focus rings. Lengths are in points, unless a
// comment says otherwise.

#include <array>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {
namespace look {

// A corner is continuous: its curvature grows gradually along the sides. It extends along the sides by this
// multiple of its radius. With this exponent, a superellipse of that extent passes through the middle of the
// circular corner.
inline constexpr double cornerReach = 1.528665;
inline constexpr double cornerExponent = 3.26;

/// The standard deviation of a shadow's Gaussian blur, as a multiple of its blur radius.
inline constexpr double shadowDeviation = 0.85;

/// The width of each of the two strokes of a focus ring.
inline constexpr double ringStroke = 2;

/// The opacity of a fading box, as a share of its colour's, at a share of the way down. See `visual::Box`.
constexpr double fadeOpacity(int fade, double passed) {
  const double t = fade > 0 ? 1 - passed : passed;
  return t * t * (3 - 2 * t);  // so that neither end can be seen
}

/// A switch's ends are half circles, and its knob is a circle. Their lengths are in units of its height.
struct SwitchParts {
  double unit;      // a point at text scale 1
  double inset;     // the distance of the knob from the edges
  double diameter;  // of the knob
  double travel;    // how far the knob moves from one end to the other
};

constexpr SwitchParts switchParts(const Size& size) {
  const double unit = size.height / 31;
  const double inset = 2 * unit;
  const double diameter = size.height - 2 * inset;
  return {unit, inset, diameter, size.width - 2 * inset - diameter};
}

/// A black circle below the knob, as a part of its shadow. Lengths are in units of the switch.
struct KnobShadow {
  double growth;  // of its radius, compared with the knob's
  double offset;  // downwards
  double alpha;
};

/// From the lowest to the topmost.
inline constexpr std::array<KnobShadow, 2> knobShadows{{{0.5, 1.5, 18 / 255.0}, {0, 1, 40 / 255.0}}};

/// A symbol's lines in a square of side 1. Each line leads through its points, and has round ends and joins.
struct SymbolLines {
  using Line = std::array<Point, 3>;
  std::array<Line, 2> points{};
  int lineCount = 1;
};

constexpr SymbolLines symbolLines(Glyph glyph) {
  using Line = SymbolLines::Line;
  switch (glyph) {
    case Glyph::xmark:
      return {
          {Line{{{0.06, 0.06}, {0.5, 0.5}, {0.94, 0.94}}}, Line{{{0.94, 0.06}, {0.5, 0.5}, {0.06, 0.94}}}},
          2};
    case Glyph::chevronLeft:
      return {{Line{{{0.70, 0.08}, {0.28, 0.50}, {0.70, 0.92}}}}};
    case Glyph::chevronRight:
      return {{Line{{{0.30, 0.08}, {0.72, 0.50}, {0.30, 0.92}}}}};
  }
  return {};
}

/// The width of a symbol's lines in a square of side 1.
constexpr double symbolStroke(FontWeight weight) {
  switch (weight) {
    case FontWeight::regular:
      return 0.11;
    case FontWeight::medium:
      return 0.14;
    case FontWeight::semibold:
      return 0.17;
    case FontWeight::bold:
      return 0.20;
  }
  return 0.11;
}

/// The families of fonts in order of preference. For scripts that they lack, see `scriptFamilies`. The
/// system's own fonts come last.
inline constexpr std::array<std::string_view, 4> fontFamilies{"Inter", "Noto Sans Arabic", "Noto Sans Hebrew",
                                                              "Noto Color Emoji"};

/// The family for a script, which a letter of it stands for.
struct ScriptFamily {
  char32_t letter;
  std::string_view family;
};

inline constexpr ScriptFamily scriptFamilies[] = {
    {U'\u0915', "Noto Sans Devanagari"}, {U'\u0995', "Noto Sans Bengali"},
    {U'\u0A15', "Noto Sans Gurmukhi"},   {U'\u0A95', "Noto Sans Gujarati"},
    {U'\u0B15', "Noto Sans Oriya"},      {U'\u0B95', "Noto Sans Tamil"},
    {U'\u0C15', "Noto Sans Telugu"},     {U'\u0C95', "Noto Sans Kannada"},
    {U'\u0D15', "Noto Sans Malayalam"},  {U'\u0D9A', "Noto Sans Sinhala"},
    {U'\u0E01', "Noto Sans Thai"},       {U'\u0E81', "Noto Sans Lao"},
    {U'\u1000', "Noto Sans Myanmar"},    {U'\u1780', "Noto Sans Khmer"},
    {U'\u10D0', "Noto Sans Georgian"},   {U'\u0561', "Noto Sans Armenian"},
    {U'\u1200', "Noto Sans Ethiopic"},   {U'\u3042', "Noto Sans CJK JP"},
    {U'\u30A2', "Noto Sans CJK JP"},     {U'\uAC00', "Noto Sans CJK KR"},
    {U'\u4E00', "Noto Sans CJK SC"}};

/// A text shrinks, down to this share of its font size, if that avoids splitting a word.
inline constexpr double minTextShare = 2.0 / 3;

}  // namespace look
}  // namespace view
}  // namespace TalvoConsentSDK
