#include "adapters/qt/VisualItem.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>

#include "adapters/qt/NinePatch.h"
#include "adapters/qt/QtImageLoader.h"
#include "adapters/qt/TextNode.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

QPainterPath glyphPath(Glyph glyph) {  // in a square of side 1
  QPainterPath path;
  switch (glyph) {
    case Glyph::xmark:
      path.moveTo(0.06, 0.06);
      path.lineTo(0.94, 0.94);
      path.moveTo(0.94, 0.06);
      path.lineTo(0.06, 0.94);
      break;
    case Glyph::chevronLeft:
      path.moveTo(0.70, 0.08);
      path.lineTo(0.28, 0.50);
      path.lineTo(0.70, 0.92);
      break;
    case Glyph::chevronRight:
      path.moveTo(0.30, 0.08);
      path.lineTo(0.72, 0.50);
      path.lineTo(0.30, 0.92);
      break;
  }
  return path;
}

double strokeWidth(FontWeight weight) {  // in a square of side 1
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

void paintSymbol(QPainter& painter, const visual::Symbol& symbol, double side) {
  QPen pen(toQColor(symbol.color), strokeWidth(symbol.weight));
  pen.setCapStyle(Qt::RoundCap);
  pen.setJoinStyle(Qt::RoundJoin);
  painter.scale(side, side);
  painter.translate(0.5, 0.5);
  if (symbol.isMirrored) painter.scale(-1, 1);
  painter.rotate(symbol.turns * 360);
  painter.translate(-0.5, -0.5);
  painter.strokePath(glyphPath(symbol.glyph), pen);
}

QColor mixed(const Color& from, const Color& to, double share) {
  const auto mix = [share](double a, double b) { return a + (b - a) * share; };
  return toQColor(
      {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue), mix(from.alpha, to.alpha)});
}

void paintSwitch(QPainter& painter, const visual::Switch& toggle, const QSizeF& size) {
  const double unit = size.height() / 31;  // the height at text scale 1
  const double inset = 2 * unit;
  const double knob = size.height() - 2 * inset;
  const double position = toggle.isMirrored ? 1 - toggle.position : toggle.position;
  const double x = inset + (size.width() - 2 * inset - knob) * position;
  const auto disc = [&](double grow, double dy, const QColor& color) {
    painter.setBrush(color);
    painter.drawEllipse(QRectF(x - grow, inset - grow + dy, knob + 2 * grow, knob + 2 * grow));
  };
  painter.setPen(Qt::NoPen);
  painter.setBrush(mixed(toggle.offColor, toggle.onColor, toggle.position));
  painter.drawRoundedRect(QRectF(QPointF(0, 0), size), size.height() / 2, size.height() / 2);
  disc(0.5 * unit, 1.5 * unit, QColor(0, 0, 0, 18));
  disc(0, unit, QColor(0, 0, 0, 40));
  disc(0, 0, toQColor(toggle.knobColor));
}

// A column of pixels in which a box's colour fades away, without a visible start.
QImage fadeColumn(const visual::Box& box, int height) {
  QImage column(1, height, QImage::Format_ARGB32);
  for (int y = 0; y < height; ++y) {
    const double passed = (y + 0.5) / height;
    const double t = box.fade > 0 ? 1 - passed : passed;
    column.setPixelColor(0, y, toQColor(box.color.withAlpha(box.color.alpha * t * t * (3 - 2 * t))));
  }
  return column;
}

// Creates the node that draws a visual, in the item's size; has one overload per kind of visual.
struct NodeMaker {
  QQuickWindow& window;
  const TextSettings& settings;
  QSizeF size;

  double ratio() const { return window.effectiveDevicePixelRatio(); }

  QSGNode* operator()(const visual::Text&) const { return new TextNode; }

  QSGNode* operator()(const visual::Symbol& symbol) const {
    return painted([&](QPainter& painter) { paintSymbol(painter, symbol, size.width()); });
  }

  QSGNode* operator()(const visual::Box& box) const {
    if (box.fade != 0) return imageNode(fadeColumn(box, std::max(1, qRound(size.height() * ratio()))));
    if (box.cornerRadius > 0) return patchNode(boxPatch(box.color, box.cornerRadius, ratio()));
    QSGRectangleNode* node = window.createRectangleNode();
    node->setColor(toQColor(box.color));
    node->setRect(QRectF(QPointF(0, 0), size));
    return node;
  }

  QSGNode* operator()(const visual::BoxShadow& box) const {
    return patchNode(shadowPatch(box.shadow, box.cornerRadius, ratio()), {box.shadow.x, box.shadow.y});
  }

  QSGNode* operator()(const visual::Picture& picture) const {
    const auto* image = dynamic_cast<const QtImage*>(picture.image.get());
    if (!image) return nullptr;
    const QSize pixels = (size * ratio()).toSize();
    return imageNode(image->content().scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
  }

  QSGNode* operator()(const visual::Switch& toggle) const {
    return painted([&](QPainter& painter) { paintSwitch(painter, toggle, size); });
  }

  QSGNode* operator()(const visual::FocusRing& ring) const {
    return patchNode(ringPatch(ring.inner, ring.outer, ring.cornerRadius, ratio()));
  }

  QSGNode* imageNode(const QImage& image) const {
    QSGImageNode* node = window.createImageNode();
    node->setTexture(window.createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));
    node->setOwnsTexture(true);
    node->setRect(QRectF(QPointF(0, 0), size));
    return node;
  }

  // Adds a margin of 2 points for shadows and strokes that extend beyond the item.
  QSGNode* painted(const std::function<void(QPainter&)>& paint) const {
    return paintedNode(window, QRectF(QPointF(0, 0), size).marginsAdded({2, 2, 2, 2}), paint);
  }

  QSGNode* patchNode(const Patch& patch, QPointF offset = {}) const {
    auto* nine = new NinePatchNode(window, patch, size);
    if (offset.isNull()) return nine;
    auto* moved = new QSGTransformNode;
    QMatrix4x4 matrix;
    matrix.translate(static_cast<float>(offset.x()), static_cast<float>(offset.y()));
    moved->setMatrix(matrix);
    moved->appendChildNode(nine);
    return moved;
  }
};

}  // namespace

VisualItem::VisualItem(const TextSettings& settings) : settings_(settings) {
  setFlag(ItemHasContents);
}

void VisualItem::show(const Visual& visual, const QPointF& origin, double depth) {
  const double ratio = window() ? window()->effectiveDevicePixelRatio() : 1;
  const auto onPixel = [ratio](double x) { return std::round(x * ratio) / ratio; };
  setPosition({onPixel(visual.frame.x) - origin.x(), onPixel(visual.frame.y) - origin.y()});
  setSize({visual.frame.width, visual.frame.height});
  setOpacity(visual.opacity);
  setZ(depth);
  if (!visual_ || visual_->content != visual.content || visual_->frame.size() != visual.frame.size()) {
    contentChanged_ = true;
    update();
  }
  if (std::holds_alternative<visual::Text>(visual.content)) {
    const double above = std::max(0.0, visual.clip ? visual.clip->y : 0) - visual.frame.y;
    const double screen = window() ? window()->height() : 0;
    const double below = std::min(screen, visual.clip ? visual.clip->bottom() : screen) - visual.frame.y;
    const TextTiles seen = textTiles(visual.frame.height, ratio, above, below);
    if (std::exchange(tiles_, seen) != seen) update();
  }
  visual_ = visual;
}

void VisualItem::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemDevicePixelRatioHasChanged) {
    contentChanged_ = true;
    update();
  }
  QQuickItem::itemChange(change, data);
}

QSGNode* VisualItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  if (contentChanged_ || !old) {
    contentChanged_ = false;
    delete old;
    old = std::visit(NodeMaker{*window(), settings_, size()}, visual_->content);
  }
  if (const auto* text = std::get_if<visual::Text>(&visual_->content)) {
    static_cast<TextNode*>(old)->show(*window(), *text, settings_, size(), tiles_);
  }
  return old;
}

}  // namespace TalvoConsentSDK
