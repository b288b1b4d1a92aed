#pragma once

// One visual as an item of Qt's scene.

#include <QQuickItem>

#include "TalvoConsentSDK/view/Visual.h"

#include "adapters/qt/QtText.h"
#include "adapters/qt/TextNode.h"

namespace TalvoConsentSDK {

/// Draws one visual, and again only when it changes; of a long text, the part that is seen.
class VisualItem : public QQuickItem {
 public:
  explicit VisualItem(const TextSettings& settings);

  /// Takes over what is to be drawn, with its place relative to `origin`, at a depth among its siblings.
  void show(const view::Visual& visual, const QPointF& origin, double depth);

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;

 private:
  const TextSettings settings_;
  std::optional<view::Visual> visual_;
  bool contentChanged_ = false;
  TextTiles tiles_;  // of a text: those that are to be seen
};

}  // namespace TalvoConsentSDK
