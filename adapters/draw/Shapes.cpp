#include "adapters/draw/Shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "TalvoConsentSDK/view/Look.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

// Fills a picture with a function of the pixels' centres, whose values are from 0 to 1.
template <class Opacity>
ShapePicture painted(int width, int height, Opacity opacity) {
  ShapePicture picture{width, height, {}};
  picture.bytes.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const double value = std::clamp(opacity(x + 0.5, y + 0.5), 0.0, 1.0);
      picture.bytes.push_back(static_cast<std::uint8_t>(std::lround(value * 255)));
    }
  }
  return picture;
}

// The share of a pixel that lies inside a shape, if the shape's edge is this far from its centre (positive:
// outside).
double coverage(double distance) {
  return std::clamp(0.5 - distance, 0.0, 1.0);
}

// Returns how far a place is outside the corner at (0, 0) of a box that extends to the right and downwards.
double cornerDistance(const CornerCurve& curve, double x, double y) {
  const double straight = std::max(-x, -y);
  const double extent = curve.extent;
  if (extent <= 0 || x >= extent || y >= extent) return straight;
  const double exponent = curve.isCircular ? 2 : look::cornerExponent;
  const double u = (extent - x) / extent;
  const double v = (extent - y) / extent;
  const double sum = std::pow(u, exponent) + std::pow(v, exponent);
  const double root = std::pow(sum, 1 / exponent);
  const double least = extent * (root - 1);  // because the slope is at most 1
  if (std::abs(least) >= 0.5) return least;  // for the coverage of a pixel that is exact enough
  // The value of the curve's equation over its slope estimates the distance well near the curve.
  const double slope = std::hypot(std::pow(u / root, exponent - 1), std::pow(v / root, exponent - 1));
  return extent * (root - 1) / slope;
}

double segmentDistance(const Point& p, const Point& a, const Point& b) {
  const double dx = b.x - a.x;
  const double dy = b.y - a.y;
  const double share = std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
  return std::hypot(p.x - a.x - dx * share, p.y - a.y - dy * share);
}

double normalDistribution(double x) {
  return 0.5 * std::erfc(-x / std::numbers::sqrt2);
}

}  // namespace

ShapePicture cornerPicture(const CornerCurve& curve, int side) {
  return painted(side, side, [&](double x, double y) { return coverage(cornerDistance(curve, x, y)); });
}

ShapePicture ringCornerPicture(const CornerCurve& outer, const CornerCurve& inner, double stroke, int side) {
  return painted(side, side, [&](double x, double y) {
    return coverage(cornerDistance(outer, x, y)) - coverage(cornerDistance(inner, x - stroke, y - stroke));
  });
}

ShapePicture symbolPicture(Glyph glyph, FontWeight weight, double side, int margin, double turns,
                           bool isMirrored) {
  const look::SymbolLines lines = look::symbolLines(glyph);
  const double radius = look::symbolStroke(weight) * side / 2;
  const int whole = static_cast<int>(std::ceil(side)) + 2 * margin;
  const double sine = std::sin(turns * 2 * std::numbers::pi);
  const double cosine = std::cos(turns * 2 * std::numbers::pi);
  return painted(whole, whole, [&](double x, double y) {
    const double across = (isMirrored ? whole / 2.0 - x : x - whole / 2.0) / side;
    const double down = (y - whole / 2.0) / side;
    const Point p{across * cosine + down * sine + 0.5, down * cosine - across * sine + 0.5};
    double distance = whole;
    for (std::size_t i = 0; i < static_cast<std::size_t>(lines.lineCount); ++i) {
      const auto& [from, over, to] = lines.points[i];
      distance = std::min({distance, segmentDistance(p, from, over), segmentDistance(p, over, to)});
    }
    return coverage(distance * side - radius);
  });
}

ShapePicture knobPicture(double diameter, int margin) {
  const int whole = static_cast<int>(std::ceil(diameter)) + 2 * margin;
  return painted(whole, whole, [&](double x, double y) {
    return coverage(std::hypot(x - whole / 2.0, y - whole / 2.0) - diameter / 2);
  });
}

ShapePicture knobShadowPicture(double diameter, int margin, double unit) {
  const int whole = static_cast<int>(std::ceil(diameter)) + 2 * margin;
  return painted(whole, whole, [&](double x, double y) {
    const double center = whole / 2.0;
    double clear = 1;
    for (const look::KnobShadow& shadow : look::knobShadows) {
      const double distance = std::hypot(x - center, y - center - shadow.offset * unit);
      clear *= 1 - shadow.alpha * coverage(distance - diameter / 2 - shadow.growth * unit);
    }
    return (1 - clear) * (1 - coverage(std::hypot(x - center, y - center) - diameter / 2));
  });
}

ShapePicture trackPicture(int width, int height, double knobLeft, double knobTop, double diameter) {
  const double radius = height / 2.0;
  return painted(width, height, [&](double x, double y) {
    const double outside = std::hypot(x - std::clamp(x, radius, width - radius), y - radius) - radius;
    const double knob = std::hypot(x - knobLeft - diameter / 2, y - knobTop - diameter / 2) - diameter / 2;
    return coverage(outside) * (1 - coverage(knob));
  });
}

std::vector<double> shadowOpacities(const CornerCurve& curve, double deviation, const std::vector<double>& x,
                                    double y) {
  // Adds up what the rows of the box give: each row is blurred sideways, and then weighted by its distance.
  constexpr int steps = 32;
  constexpr double reach = 3;  // in deviations; what is farther away adds nothing that can be seen
  const double first = std::max(0.0, y - reach * deviation);
  const double last = y + reach * deviation;
  std::vector<double> sums(x.size());
  double before = normalDistribution((first - y) / deviation);
  for (int i = 0; i < steps && last > first; ++i) {
    const double end = first + (last - first) * (i + 1) / steps;
    const double after = normalDistribution((end - y) / deviation);
    const double row = end - (last - first) / steps / 2;
    double left = 0;  // where the row begins
    if (row < curve.extent) {
      const double exponent = curve.isCircular ? 2 : look::cornerExponent;
      left = curve.extent * (1 - std::pow(1 - std::pow(1 - row / curve.extent, exponent), 1 / exponent));
    }
    for (std::size_t place = 0; place < x.size(); ++place) {
      sums[place] += (after - before) * normalDistribution((x[place] - left) / deviation);
    }
    before = after;
  }
  return sums;
}

}  // namespace TalvoConsentSDK
