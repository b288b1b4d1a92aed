#pragma once

// Opacity pictures of the banner's shapes, in pixels, and the opacity of soft shadows.

#include <cstdint>
#include <vector>

#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {

/// One byte of opacity a pixel, row by row.
struct ShapePicture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> bytes{};
};

/// A corner that begins `extent` pixels from its vertex along both sides: continuous, or a quarter of a
/// circle.
struct CornerCurve {
  double extent = 0;
  bool isCircular = false;
};

/// The top left corner of a filled box.
ShapePicture cornerPicture(const CornerCurve& curve, int side);

/// The top left corner of a box without a smaller box in it, which lies `stroke` pixels from its edges.
ShapePicture ringCornerPicture(const CornerCurve& outer, const CornerCurve& inner, double stroke, int side);

/// A symbol in the middle of its picture, `side` pixels large and `margin` pixels from the edges. It is
/// turned clockwise, and then mirrored.
ShapePicture symbolPicture(view::Glyph glyph, platform::FontWeight weight, double side, int margin,
                           double turns, bool isMirrored);

/// A circle in the middle of its picture, which ends `margin` pixels beyond it.
ShapePicture knobPicture(double diameter, int margin);

/// The shadow around a switch's knob without the part that the knob covers, in a picture of the same size.
/// `unit` is the switch's, in pixels (see view/Look.h).
ShapePicture knobShadowPicture(double diameter, int margin, double unit);

/// A switch's background without the part that the knob covers, whose left edge is at `knobLeft`.
ShapePicture trackPicture(int width, int height, double knobLeft, double knobTop, double diameter);

/// The opacities of the blurred top left corner of a large opaque box, from 0 to 1, at places in a row, seen
/// from the vertex.
std::vector<double> shadowOpacities(const CornerCurve& curve, double deviation, const std::vector<double>& x,
                                    double y);

}  // namespace TalvoConsentSDK
