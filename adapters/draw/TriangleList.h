#pragma once

// Collects the triangles of a draw list. Positions are in pixels, also those in textures until the list is
// finished.

#include <array>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Geometry.h"

#include "adapters/draw/Atlas.h"
#include "adapters/draw/DrawList.h"
#include "adapters/draw/SurfaceOptions.h"

namespace TalvoConsentSDK {

using Corners = std::array<platform::Point, 4>;  // clockwise from the top left

class TriangleList {
 public:
  void clear(const SurfaceSize& size);

  /// What follows is clipped to whole pixels. Without a clip, only the surface's edges clip.
  void setClip(const std::optional<platform::Rect>& clip);

  /// Adds a part of a texture. Leaves it out if nothing of it is inside the clip.
  void addQuad(TextureFormat texture, const Corners& corners, const Corners& source,
               const platform::Color& color);
  void addRect(TextureFormat texture, const platform::Rect& area, const platform::Rect& source,
               const platform::Color& color);

  /// Adds a grid of rectangles, whose corners have colours of their own. The colours are given row by row.
  void addGrid(const std::vector<double>& x, const std::vector<double>& y,
               const std::vector<platform::Color>& colors, const platform::Point& source);

  /// Converts positions in textures to shares of the textures' sizes, and makes the commands.
  void finish(const Atlas& alphas, const Atlas& colors);

  std::span<const DrawVertex> vertices() const { return vertices_; }
  std::span<const std::uint32_t> indices() const { return indices_; }
  std::span<const DrawCommand> commands() const { return commands_; }

 private:
  // Triangles of one command.
  struct Batch {
    PixelRect clip;
    TextureFormat texture = TextureFormat::alpha8;
    std::size_t firstVertex = 0;
    std::size_t firstIndex = 0;
  };

  bool beginBatch(TextureFormat texture, const platform::Rect& bounds);
  std::uint32_t addVertex(const platform::Point& place, const platform::Point& source,
                          const platform::Color& color);
  void addTriangles(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d);

  PixelRect surface_;
  PixelRect clip_;
  std::vector<Batch> batches_;
  std::vector<DrawVertex> vertices_;
  std::vector<std::uint32_t> indices_;
  std::vector<DrawCommand> commands_;
};

}  // namespace TalvoConsentSDK
