#pragma once

// Points, sizes and rectangles of the banner. Units are points (density-independent); x grows to the right, y
// downwards.

#include <algorithm>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
  double width = 0;
  double height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

/// Distances from the four edges. `leading` is left in left-to-right layouts and right in right-to-left ones.
struct Insets {
  double top = 0;
  double leading = 0;
  double bottom = 0;
  double trailing = 0;

  static constexpr Insets all(double distance) { return {distance, distance, distance, distance}; }
  static constexpr Insets vertical(double distance) { return {distance, 0, distance, 0}; }

  constexpr double width() const { return leading + trailing; }
  constexpr double height() const { return top + bottom; }
  friend bool operator==(const Insets&, const Insets&) = default;
};

/// What the system's own bars and notches cover at each edge of a window. They do not change sides with the
/// text, so `left` is left in right-to-left layouts, too.
struct SafeArea {
  double top = 0;
  double left = 0;
  double bottom = 0;
  double right = 0;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  constexpr double right() const { return x + width; }
  constexpr double bottom() const { return y + height; }
  constexpr Point center() const { return {x + width / 2, y + height / 2}; }
  constexpr Size size() const { return {width, height}; }

  constexpr bool contains(Point p) const { return p.x >= x && p.x < right() && p.y >= y && p.y < bottom(); }
  constexpr bool intersects(const Rect& other) const {
    return x < other.right() && other.x < right() && y < other.bottom() && other.y < bottom();
  }
  constexpr Rect intersection(const Rect& other) const {
    const double left = std::max(x, other.x);
    const double top = std::max(y, other.y);
    return {left, top, std::max(0.0, std::min(right(), other.right()) - left),
            std::max(0.0, std::min(bottom(), other.bottom()) - top)};
  }

  /// Returns the rectangle with each edge moved outwards.
  constexpr Rect grownBy(double distance) const {
    return {x - distance, y - distance, width + 2 * distance, height + 2 * distance};
  }

  /// Returns the rectangle grown around its centre to at least `minSize` in each direction.
  constexpr Rect grownTo(Size minSize) const {
    const double w = std::max(width, minSize.width);
    const double h = std::max(height, minSize.height);
    return {x - (w - width) / 2, y - (h - height) / 2, w, h};
  }
  friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace platform
}  // namespace TalvoConsentSDK
