#pragma once

// A text in the scene, painted in tiles, so that no picture is much higher than 2,000 pixels, however long
// the text is.

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

/// Creates a node with a picture of `area`, which `paint` draws in the item's coordinates. The area is
/// enlarged to whole pixels. Returns null if the area is empty.
QSGImageNode* paintedNode(QQuickWindow& window, const QRectF& area,
                          const std::function<void(QPainter&)>& paint);

/// A range of a text's tiles, including the last one.
struct TextTiles {
  int first = 0;
  int last = 0;
  friend bool operator==(const TextTiles&, const TextTiles&) = default;
};

/// Returns the tiles of a text of this height that are visible between `top` and `bottom`. A short text has
/// only one tile.
TextTiles textTiles(double height, double pixelRatio, double top, double bottom);

/// Shows tiles of a text. (It is a transform node that moves nothing, because with a plain node the software
/// renderer does not position children that are added later.)
class TextNode : public QSGTransformNode {
 public:
  /// Shows these tiles: paints the new ones and removes all others.
  void show(QQuickWindow& window, const view::visual::Text& text, const TextSettings& settings,
            const QSizeF& size, TextTiles shown);

 private:
  std::map<int, QSGNode*> tiles_;
};

}  // namespace TalvoConsentSDK
