#include "adapters/qt/TextNode.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <algorithm>
#include <cmath>
#include <optional>

#include "adapters/qt/NinePatch.h"
#include "adapters/qt/WrappedText.h"

namespace TalvoConsentSDK {

using namespace view;

namespace {

constexpr double textOverhang = 6;  // points; letters of some scripts extend beyond their line
constexpr int tilePixels = 1024;    // height of a tile; a text less than two tiles high has one tile

int tileCount(double height, double pixelRatio) {
  return std::max(1, static_cast<int>(height * pixelRatio / tilePixels));  // the last tile takes the rest
}

Qt::Alignment toQtAlignment(visual::TextAlignment alignment) {
  switch (alignment) {
    case visual::TextAlignment::left:
      return Qt::AlignLeft;
    case visual::TextAlignment::center:
      return Qt::AlignHCenter;
    case visual::TextAlignment::right:
      return Qt::AlignRight;
  }
  return Qt::AlignLeft;
}

}  // namespace

QSGImageNode* paintedNode(QQuickWindow& window, const QRectF& area,
                          const std::function<void(QPainter&)>& paint) {
  const double ratio = window.effectiveDevicePixelRatio();
  constexpr double rounding = 1e-6;
  const auto down = [ratio](double x) { return static_cast<int>(std::floor(x * ratio + rounding)); };
  const auto up = [ratio](double x) { return static_cast<int>(std::ceil(x * ratio - rounding)); };
  const QRect pixels(QPoint(down(area.left()), down(area.top())),
                     QPoint(up(area.right()) - 1, up(area.bottom()) - 1));
  if (pixels.isEmpty()) return nullptr;
  QImage image(pixels.size(), QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(ratio);
  image.fill(Qt::transparent);
  {
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.translate(QPointF(-pixels.topLeft()) / ratio);
    paint(painter);
  }
  QSGImageNode* node = window.createImageNode();
  node->setTexture(window.createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));
  node->setOwnsTexture(true);
  node->setRect(QRectF(QPointF(pixels.topLeft()) / ratio, QSizeF(pixels.size()) / ratio));
  return node;
}

TextTiles textTiles(double height, double pixelRatio, double top, double bottom) {
  const int last = tileCount(height, pixelRatio) - 1;
  const auto at = [&](double y) {
    return static_cast<int>(
        std::clamp(std::floor(y * pixelRatio / tilePixels), 0.0, static_cast<double>(last)));
  };
  return {at(top), at(bottom)};
}

void TextNode::show(QQuickWindow& window, const visual::Text& text, const TextSettings& settings,
                    const QSizeF& size, TextTiles shown) {
  const double ratio = window.effectiveDevicePixelRatio();
  const int last = tileCount(size.height(), ratio) - 1;
  std::erase_if(tiles_, [&](const auto& tile) {
    const bool isGone = tile.first < shown.first || tile.first > shown.last;
    if (isGone) delete tile.second;
    return isGone;
  });
  std::optional<WrappedText> wrapped;
  for (int i = shown.first; i <= shown.last; ++i) {
    if (tiles_.contains(i)) continue;
    if (!wrapped)
      wrapped.emplace(text.text, text.font, settings, size.width(), toQtAlignment(text.alignment));
    const double top = i == 0 ? -textOverhang : i * tilePixels / ratio;
    const double bottom = i == last ? size.height() + textOverhang : (i + 1) * tilePixels / ratio;
    QSGNode* tile = paintedNode(
        window, {-textOverhang, top, size.width() + 2 * textOverhang, bottom - top}, [&](QPainter& painter) {
          wrapped->draw(painter, toQColor(text.color), text.isUnderlined, top, bottom);
        });
    if (!tile) continue;
    appendChildNode(tile);
    tiles_[i] = tile;
  }
}

}  // namespace TalvoConsentSDK
