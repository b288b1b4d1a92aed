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

#include "TalvoConsentSDK/view/Look.h"

#include "adapters/qt/NinePatch.h"
#include "adapters/qt/QtImageLoader.h"
#include "adapters/qt/TextNode.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

QPainterPath symbolPath(Glyph glyph) {  // in a square of side 1
  const look::SymbolLines lines = look::symbolLines(glyph);
  QPainterPath path;
  for (std::size_t i = 0; i < static_cast<std::size_t>(lines.lineCount); ++i) {
    const auto& [from, over, to] = lines.points[i];
    path.moveTo(from.x, from.y);
    path.lineTo(over.x, over.y);
    path.lineTo(to.x, to.y);
  }
  return path;
}

void paintSymbol(QPainter& painter, const visual::Symbol& symbol, double side) {
  QPen pen(toQColor(symbol.color), look::symbolStroke(symbol.weight));
  pen.setCapStyle(Qt::RoundCap);
  pen.setJoinStyle(Qt::RoundJoin);
  painter.scale(side, side);
  painter.translate(0.5, 0.5);
  if (symbol.isMirrored) painter.scale(-1, 1);
  painter.rotate(symbol.turns * 360);
  painter.translate(-0.5, -0.5);
  painter.strokePath(symbolPath(symbol.glyph), pen);
}

QColor mixed(const Color& from, const Color& to, double share) {
  const auto mix = [share](double a, double b) { return a + (b - a) * share; };
  return toQColor(
      {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue), mix(from.alpha, to.alpha)});
}

void paintSwitch(QPainter& painter, const visual::Switch& toggle, const QSizeF& size) {
  const look::SwitchParts parts = look::switchParts({size.width(), size.height()});
  const double x = parts.inset + parts.travel * (toggle.isMirrored ? 1 - toggle.position : toggle.position);
  const auto disc = [&](double grow, double dy, const QColor& color) {
    const double side = parts.diameter + 2 * grow;
    painter.setBrush(color);
    painter.drawEllipse(QRectF(x - grow, parts.inset - grow + dy, side, side));
  };
  painter.setPen(Qt::NoPen);
  painter.setBrush(mixed(toggle.offColor, toggle.onColor, toggle.position));
  painter.drawRoundedRect(QRectF(QPointF(0, 0), size), size.height() / 2, size.height() / 2);
  for (const look::KnobShadow& shadow : look::knobShadows) {
    disc(shadow.growth * parts.unit, shadow.offset * parts.unit,
         QColor::fromRgbF(0, 0, 0, static_cast<float>(shadow.alpha)));
  }
  disc(0, 0, toQColor(toggle.knobColor));
}

// A column of pixels in which a box's colour fades away, without a visible start.
QImage fadeColumn(const visual::Box& box, int height) {
  QImage column(1, height, QImage::Format_ARGB32);
  for (int y = 0; y < height; ++y) {
    const double share = look::fadeOpacity(box.fade, (y + 0.5) / height);
    column.setPixelColor(0, y, toQColor(box.color.withAlpha(box.color.alpha * share)));
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
    if (box.fade != 0) {
      // Longer by half a pixel at each end, because clips end at whole pixels and this may not.
      const double half = 0.5 / ratio();
      return imageNode(fadeColumn(box, std::max(1, qRound(size.height() * ratio()))), {0, half, 0, half});
    }
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

  QSGNode* imageNode(const QImage& image, const QMarginsF& margins = {}) const {
    QSGImageNode* node = window.createImageNode();
    node->setTexture(window.createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));
    node->setOwnsTexture(true);
    node->setRect(QRectF(QPointF(0, 0), size).marginsAdded(margins));
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
