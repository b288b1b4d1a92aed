#include "adapters/draw/TriangleList.h"

#include <algorithm>
#include <cmath>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr double farAway = 1e6;  // keeps positions in the range in which single precision is exact enough

Corners cornersOf(const Rect& area) {
  return {{{area.x, area.y}, {area.right(), area.y}, {area.right(), area.bottom()}, {area.x, area.bottom()}}};
}

Rect rectOf(const PixelRect& area) {
  return {static_cast<double>(area.x), static_cast<double>(area.y), static_cast<double>(area.width),
          static_cast<double>(area.height)};
}

bool encloses(const PixelRect& outer, const Rect& inner) {
  const Rect area = rectOf(outer);
  return inner.x >= area.x && inner.y >= area.y && inner.right() <= area.right() &&
         inner.bottom() <= area.bottom();
}

std::uint8_t toByte(double share) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
}

}  // namespace

void TriangleList::clear(const SurfaceSize& size) {
  surface_ = clip_ = {0, 0, size.width, size.height};
  batches_.clear();
  vertices_.clear();
  indices_.clear();
  commands_.clear();
}

void TriangleList::setClip(const std::optional<Rect>& clip) {
  clip_ = surface_;
  if (!clip) return;
  const auto edge = [](double place, int limit) {
    return static_cast<int>(std::lround(std::clamp(place, 0.0, static_cast<double>(limit))));
  };
  clip_ = {edge(clip->x, surface_.width), edge(clip->y, surface_.height), 0, 0};
  clip_.width = edge(clip->right(), surface_.width) - clip_.x;
  clip_.height = edge(clip->bottom(), surface_.height) - clip_.y;
}

// Continues the last command if that draws the same: with the same texture, and without clipping more or
// less.
bool TriangleList::beginBatch(TextureFormat texture, const Rect& bounds) {
  if (clip_.width <= 0 || clip_.height <= 0 || !rectOf(clip_).intersects(bounds)) return false;
  if (!batches_.empty() && batches_.back().texture == texture) {
    const PixelRect& last = batches_.back().clip;
    if (last == clip_ || (encloses(last, bounds) && encloses(clip_, bounds))) return true;
  }
  batches_.push_back({clip_, texture, vertices_.size(), indices_.size()});
  return true;
}

std::uint32_t TriangleList::addVertex(const Point& place, const Point& source, const Color& color) {
  const auto exact = [](double value) { return static_cast<float>(std::clamp(value, -farAway, farAway)); };
  vertices_.push_back({exact(place.x),
                       exact(place.y),
                       static_cast<float>(source.x),
                       static_cast<float>(source.y),
                       {toByte(color.red), toByte(color.green), toByte(color.blue), toByte(color.alpha)}});
  return static_cast<std::uint32_t>(vertices_.size() - 1);
}

void TriangleList::addTriangles(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  indices_.insert(indices_.end(), {a, b, c, a, c, d});
}

void TriangleList::addQuad(TextureFormat texture, const Corners& corners, const Corners& source,
                           const Color& color) {
  const auto [left, right] = std::ranges::minmax(corners, {}, &Point::x);
  const auto [top, bottom] = std::ranges::minmax(corners, {}, &Point::y);
  if (!beginBatch(texture, {left.x, top.y, right.x - left.x, bottom.y - top.y})) return;
  std::array<std::uint32_t, 4> added{};
  for (std::size_t i = 0; i < added.size(); ++i) added[i] = addVertex(corners[i], source[i], color);
  addTriangles(added[0], added[1], added[2], added[3]);
}

void TriangleList::addRect(TextureFormat texture, const Rect& area, const Rect& source, const Color& color) {
  if (area.width <= 0 || area.height <= 0) return;
  addQuad(texture, cornersOf(area), cornersOf(source), color);
}

void TriangleList::addGrid(const std::vector<double>& x, const std::vector<double>& y,
                           const std::vector<Color>& colors, const Point& source) {
  const Rect bounds{x.front(), y.front(), x.back() - x.front(), y.back() - y.front()};
  if (!beginBatch(TextureFormat::alpha8, bounds)) return;
  const auto first = static_cast<std::uint32_t>(vertices_.size());
  for (std::size_t row = 0; row < y.size(); ++row) {
    for (std::size_t column = 0; column < x.size(); ++column) {
      addVertex({x[column], y[row]}, source, colors[row * x.size() + column]);
    }
  }
  const auto width = static_cast<std::uint32_t>(x.size());
  for (std::uint32_t row = 0; row + 1 < y.size(); ++row) {
    for (std::uint32_t column = 0; column + 1 < width; ++column) {
      const std::uint32_t corner = first + row * width + column;
      addTriangles(corner, corner + 1, corner + width + 1, corner + width);
    }
  }
}

void TriangleList::finish(const Atlas& alphas, const Atlas& colors) {
  for (std::size_t i = 0; i < batches_.size(); ++i) {
    const Batch& batch = batches_[i];
    const bool isLast = i + 1 == batches_.size();
    const Atlas& atlas = batch.texture == TextureFormat::alpha8 ? alphas : colors;
    const std::size_t endVertex = isLast ? vertices_.size() : batches_[i + 1].firstVertex;
    const std::size_t endIndex = isLast ? indices_.size() : batches_[i + 1].firstIndex;
    for (std::size_t v = batch.firstVertex; v < endVertex; ++v) {
      vertices_[v].u /= static_cast<float>(atlas.width());
      vertices_[v].v /= static_cast<float>(atlas.height());
    }
    commands_.push_back({batch.clip, atlas.texture(), static_cast<std::uint32_t>(batch.firstIndex),
                         static_cast<std::uint32_t>(endIndex - batch.firstIndex)});
  }
}

}  // namespace TalvoConsentSDK
