#pragma once

// Shows one visual as an item in Qt's scene.

#include <QQuickItem>

#include "TalvoConsentSDK/view/Visual.h"

#include "adapters/qt/QtText.h"
#include "adapters/qt/TextNode.h"

namespace TalvoConsentSDK {

/// Draws one visual and redraws it only when it changes. Draws only the visible part of a long text.
class VisualItem : public QQuickItem {
 public:
  explicit VisualItem(const TextSettings& settings);

  /// Sets the visual to draw, positioned relative to `origin`. `depth` orders the item among its siblings.
  void show(const view::Visual& visual, const QPointF& origin, double depth);

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

 private:
  const TextSettings settings_;
  std::optional<view::Visual> visual_;
  bool contentChanged_ = false;
  TextTiles tiles_;  // for a text, the visible tiles
};

}  // namespace TalvoConsentSDK
