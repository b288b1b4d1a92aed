#pragma once

// A text in the scene, painted in tiles: no picture is larger than a screen, however long the text.

#include <QSGNode>
#include <QSizeF>
#include <functional>
#include <map>

#include "TalvoConsentSDK/view/Visual.h"

#include "adapters/qt/QtText.h"

class QPainter;
class QQuickWindow;
class QSGImageNode;

namespace TalvoConsentSDK {

/// A picture of `area` of an item, drawn by `paint` in the item's coordinates. Null where it would be empty.
/// The area is enlarged to whole pixels.
QSGImageNode* paintedNode(QQuickWindow& window, const QRectF& area,
                          const std::function<void(QPainter&)>& paint);

/// Tiles of a text, from the first to the last.
struct TextTiles {
  int first = 0;
  int last = 0;
  friend bool operator==(const TextTiles&, const TextTiles&) = default;
};

/// The tiles of a text of this height that are seen between `top` and `bottom`. An ordinary text has only
/// one.
TextTiles textTiles(double height, double pixelRatio, double top, double bottom);

/// (A transform, which moves nothing: where the processor draws, a child that comes later does not find its
/// place through a plain node.)
class TextNode : public QSGTransformNode {
 public:
  /// Shows these tiles, paints those that are new, and drops others.
  void show(QQuickWindow& window, const view::visual::Text& text, const TextSettings& settings,
            const QSizeF& size, TextTiles shown);

 private:
  std::map<int, QSGNode*> tiles_;
};

}  // namespace TalvoConsentSDK
