#pragma once

// Boxes of any size from one small picture: its corners are drawn as they are, its edges and middle
// stretched or, where they have one colour, filled.

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

/// A rectangle with continuous corners: the curve flows into the sides instead of beginning at once.
QPainterPath continuousRect(const QRectF& rect, double cornerRadius);

/// A picture of which `corner` points at every side are not stretched, and which reaches `overhang` points
/// beyond the box it stands for.
struct Patch {
  QImage image;
  double corner = 0;
  double overhang = 0;
  std::array<std::optional<QColor>, 9> plain{};  // of each part, row by row: its colour, when it has only one
};

/// Patches are made once per look and pixel ratio, and kept.
Patch boxPatch(const platform::Color& color, double cornerRadius, double pixelRatio);
Patch shadowPatch(const view::Shadow& shadow, double cornerRadius, double pixelRatio);
Patch ringPatch(const platform::Color& inner, const platform::Color& outer, double cornerRadius,
                double pixelRatio);

/// Draws a patch around a box of this size. Filling is several times as fast as stretching where the
/// processor draws, and what it hides is not drawn at all. (The scene graph's own nine-patch node is drawn
/// wrongly by the software renderer at pixel ratios above 1.)
class NinePatchNode : public QSGNode {
 public:
  NinePatchNode(QQuickWindow& window, const Patch& patch, const QSizeF& box);
};

}  // namespace TalvoConsentSDK
