#pragma once

// Draws boxes of any size from one small picture. The corners are drawn unchanged; the edges and the middle
// are stretched, or filled if they have a single colour.

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QSGNode>
#include <array>
#include <optional>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

class QQuickWindow;

namespace TalvoConsentSDK {

QColor toQColor(const platform::Color& color);

/// Returns a rectangle with continuous corners: their curvature grows gradually along the sides.
QPainterPath continuousRect(const QRectF& rect, double cornerRadius);

/// A picture of a box. At each side, `corner` points of it are not stretched. It extends `overhang` points
/// beyond the box.
struct Patch {
  QImage image;
  double corner = 0;
  double overhang = 0;

  /// The colour of each of the nine parts, row by row; absent if the part has several colours.
  std::array<std::optional<QColor>, 9> solidColors{};
};

/// Each patch is created once per set of arguments and then cached. Thread-safe.
Patch boxPatch(const platform::Color& color, double cornerRadius, double pixelRatio);
Patch shadowPatch(const view::Shadow& shadow, double cornerRadius, double pixelRatio);
Patch ringPatch(const platform::Color& inner, const platform::Color& outer, double cornerRadius,
                double pixelRatio);

/// Draws a patch around a box of this size. With the software renderer, filling is several times as fast as
/// stretching, and nodes hidden behind a filled part are not drawn at all. (The software renderer draws the
/// scene graph's own nine-patch node wrongly at pixel ratios above 1.)
class NinePatchNode : public QSGNode {
 public:
  NinePatchNode(QQuickWindow& window, const Patch& patch, const QSizeF& box);
};

}  // namespace TalvoConsentSDK
