#include "adapters/qt/NinePatch.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGRectangleNode>
#include <QSGTexture>
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <mutex>
#include <numbers>
#include <vector>

#include "TalvoConsentSDK/view/Look.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

// Rounds a length in points up to whole pixels, so that corners end at the edge of a pixel.
double roundedUpToPixels(double length, double pixelRatio) {
  return std::ceil(length * pixelRatio) / pixelRatio;
}

QImage blankImage(double side, double pixelRatio) {
  const int pixels = static_cast<int>(std::lround(side * pixelRatio));
  QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(pixelRatio);
  image.fill(Qt::transparent);
  return image;
}

// Blurs the rows of an alpha map by one box blur and transposes the result. Two calls blur both directions.
std::vector<double> blurredAndTransposed(const std::vector<double>& map, int side, int radius) {
  std::vector<double> result(map.size());
  const double share = 1.0 / (2 * radius + 1);
  for (int y = 0; y < side; ++y) {
    double sum = 0;
    const auto at = [&](int x) {
      return x < 0 || x >= side ? 0.0 : map[static_cast<std::size_t>(y * side + x)];
    };
    for (int x = -radius; x < radius; ++x) sum += at(x);
    for (int x = 0; x < side; ++x) {
      sum += at(x + radius);
      result[static_cast<std::size_t>(x * side + y)] = sum * share;
      sum -= at(x - radius);
    }
  }
  return result;
}

// Returns the picture's colour if all its pixels share one.
std::optional<QColor> solidColor(const QImage& image) {
  const QRgb first = image.pixel(0, 0);
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      if (image.pixel(x, y) != first) return std::nullopt;
    }
  }
  return image.pixelColor(0, 0);  // not premultiplied, unlike `first`
}

void findSolidColors(Patch& patch) {
  const int side = patch.image.width();
  const int cut = static_cast<int>(std::lround(patch.corner * patch.image.devicePixelRatio()));
  const std::array cuts{0, cut, side - cut, side};
  for (std::size_t part = 0; part < patch.solidColors.size(); ++part) {
    const std::size_t row = part / 3, column = part % 3;
    const QRect area(QPoint(cuts[column], cuts[row]), QPoint(cuts[column + 1] - 1, cuts[row + 1] - 1));
    patch.solidColors[part] = solidColor(patch.image.copy(area));
  }
}

// Returns the cached patch for a key. Locked, because each window may have its own render thread.
template <class Make>
Patch cached(const std::vector<double>& key, Make make) {
  static std::mutex lock;
  static std::map<std::vector<double>, Patch> patches;  // a banner needs only a handful
  const std::scoped_lock guard(lock);
  const auto entry = patches.find(key);
  if (entry != patches.end()) return entry->second;
  Patch& patch = patches.emplace(key, make()).first->second;
  findSolidColors(patch);
  return patch;
}

}  // namespace

QColor toQColor(const Color& color) {
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue), static_cast<float>(color.alpha));
}

QPainterPath continuousRect(const QRectF& rect, double cornerRadius) {
  QPainterPath path;
  const double extent = std::min({cornerRadius * look::cornerReach, rect.width() / 2, rect.height() / 2});
  if (extent <= 0) {
    path.addRect(rect);
    return path;
  }
  // One corner, from its vertical side to its horizontal side, as distances from its vertex.
  constexpr int steps = 24;
  std::array<QPointF, steps + 1> curve;
  for (int i = 0; i <= steps; ++i) {
    const double angle = std::numbers::pi / 2 * i / steps;
    curve[static_cast<std::size_t>(i)] = {extent * (1 - std::pow(std::cos(angle), 2 / look::cornerExponent)),
                                          extent * (1 - std::pow(std::sin(angle), 2 / look::cornerExponent))};
  }
  QPolygonF outline;
  for (const QPointF& p : curve) outline << QPointF(rect.left() + p.x(), rect.top() + p.y());
  for (auto p = curve.rbegin(); p != curve.rend(); ++p)
    outline << QPointF(rect.right() - p->x(), rect.top() + p->y());
  for (const QPointF& p : curve) outline << QPointF(rect.right() - p.x(), rect.bottom() - p.y());
  for (auto p = curve.rbegin(); p != curve.rend(); ++p)
    outline << QPointF(rect.left() + p->x(), rect.bottom() - p->y());
  path.addPolygon(outline);
  path.closeSubpath();
  return path;
}

Patch boxPatch(const Color& color, double cornerRadius, double pixelRatio) {
  return cached({0, color.red, color.green, color.blue, color.alpha, cornerRadius, pixelRatio}, [&] {
    const double corner = roundedUpToPixels(cornerRadius * look::cornerReach, pixelRatio);
    const double side = 2 * corner + roundedUpToPixels(2, pixelRatio);
    QImage image = blankImage(side, pixelRatio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(continuousRect({0, 0, side, side}, cornerRadius), toQColor(color));
    return Patch{image, corner, 0};
  });
}

Patch shadowPatch(const Shadow& shadow, double cornerRadius, double pixelRatio) {
  const Color& color = shadow.color;
  return cached(
      {1, color.red, color.green, color.blue, color.alpha, shadow.radius, cornerRadius, pixelRatio}, [&] {
        // Three box blurs approximate a Gaussian blur. Each one extends the shadow by its radius.
        const int boxRadius =
            std::max(1, static_cast<int>(std::lround(shadow.radius * pixelRatio * look::shadowDeviation)));
        const double overhang = 3 * boxRadius / pixelRatio;
        const double corner = roundedUpToPixels(cornerRadius * look::cornerReach, pixelRatio) + 2 * overhang;
        const double side = 2 * corner + roundedUpToPixels(2, pixelRatio);
        QImage image = blankImage(side, pixelRatio);
        {
          QPainter painter(&image);
          painter.setRenderHint(QPainter::Antialiasing);
          painter.fillPath(
              continuousRect({overhang, overhang, side - 2 * overhang, side - 2 * overhang}, cornerRadius),
              Qt::black);
        }
        const int pixels = image.width();
        std::vector<double> alpha(static_cast<std::size_t>(pixels * pixels));
        for (int y = 0; y < pixels; ++y) {
          for (int x = 0; x < pixels; ++x) {
            alpha[static_cast<std::size_t>(y * pixels + x)] = qAlpha(image.pixel(x, y)) / 255.0;
          }
        }
        for (int pass = 0; pass < 6; ++pass) alpha = blurredAndTransposed(alpha, pixels, boxRadius);
        for (int y = 0; y < pixels; ++y) {
          for (int x = 0; x < pixels; ++x) {
            const double a =
                std::clamp(alpha[static_cast<std::size_t>(y * pixels + x)], 0.0, 1.0) * color.alpha;
            image.setPixelColor(x, y, toQColor(color.withAlpha(a)));
          }
        }
        return Patch{image, corner, overhang};
      });
}

Patch ringPatch(const Color& inner, const Color& outer, double cornerRadius, double pixelRatio) {
  const std::vector<double> key{2,           inner.red,  inner.green, inner.blue,   inner.alpha, outer.red,
                                outer.green, outer.blue, outer.alpha, cornerRadius, pixelRatio};
  return cached(key, [&] {
    const double corner = roundedUpToPixels(cornerRadius * look::cornerReach + look::ringStroke, pixelRatio);
    const double side = 2 * corner + roundedUpToPixels(2, pixelRatio);
    QImage image = blankImage(side, pixelRatio);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto stroke = [&](const Color& color, double inset) {
      painter.setPen(QPen(toQColor(color), look::ringStroke));
      painter.drawPath(
          continuousRect({inset, inset, side - 2 * inset, side - 2 * inset}, cornerRadius - inset));
    };
    stroke(outer, look::ringStroke / 2);
    stroke(inner, look::ringStroke * 3 / 2);
    return Patch{image, corner, 0};
  });
}

NinePatchNode::NinePatchNode(QQuickWindow& window, const Patch& patch, const QSizeF& box) {
  const double ratio = patch.image.devicePixelRatio();
  const double source = patch.image.width();
  const auto cuts = [&](double length) {
    const double whole = length + 2 * patch.overhang;
    const double corner = std::min(patch.corner, whole / 2);
    std::array places{-patch.overhang, corner - patch.overhang, length + patch.overhang - corner,
                      length + patch.overhang};
    for (double& each : places)
      each = std::round(each * ratio) / ratio;  // because Qt rounds filled parts and pictures differently
    return places;
  };
  const auto sourceCuts = [&](double length) {
    const double corner = std::round(std::min(patch.corner, length / 2 + patch.overhang) * ratio);
    return std::array{0.0, corner, source - corner, source};
  };
  const auto x = cuts(box.width());
  const auto y = cuts(box.height());
  const auto u = sourceCuts(box.width());
  const auto v = sourceCuts(box.height());
  QSGTexture* texture = nullptr;
  for (std::size_t part = 0; part < patch.solidColors.size(); ++part) {
    const std::size_t row = part / 3, column = part % 3;
    const QRectF area(QPointF(x[column], y[row]), QPointF(x[column + 1], y[row + 1]));
    if (area.isEmpty()) continue;
    if (const auto& color = patch.solidColors[part]) {
      if (color->alpha() == 0) continue;
      QSGRectangleNode* node = window.createRectangleNode();
      node->setColor(*color);
      node->setRect(area);
      appendChildNode(node);
      continue;
    }
    QSGImageNode* node = window.createImageNode();
    const bool isFirst = !texture;
    if (isFirst) texture = window.createTextureFromImage(patch.image, QQuickWindow::TextureHasAlphaChannel);
    node->setTexture(texture);
    node->setOwnsTexture(isFirst);
    node->setFiltering(QSGTexture::Linear);
    node->setRect(area);
    node->setSourceRect(QRectF(QPointF(u[column], v[row]), QPointF(u[column + 1], v[row + 1])));
    appendChildNode(node);
  }
}

}  // namespace TalvoConsentSDK
