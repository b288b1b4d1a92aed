#pragma once

// What a renderer needs to draw one frame of the banner: triangles with a texture and a clip rectangle, in
// the form in which the renderers of games take them. The structs are plain, so that a C interface can pass
// them on unchanged.

#include <cstddef>
#include <cstdint>
#include <span>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A corner of a triangle, in 20 bytes.
struct DrawVertex {
  float x = 0;  // in pixels, from the surface's left edge
  float y = 0;  // in pixels, from the surface's top edge, downwards
  float u = 0;  // across the texture, from 0 to 1
  float v = 0;  // down the texture, from 0 to 1; 0 is the row that was uploaded first

  /// Red, green, blue and alpha, in this order in memory. sRGB, not premultiplied.
  std::uint8_t color[4] = {};
};

/// A rectangle of whole pixels.
struct PixelRect {
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
  friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// A texture for as long as it exists. Never 0. Ids are not used again.
using TextureId = std::uint32_t;

/// Triangles that are drawn by one call. Draw the commands in order.
struct DrawCommand {
  PixelRect clip;  // nothing is drawn outside it; never empty, and inside the surface
  TextureId texture = 0;
  std::uint32_t firstIndex = 0;
  std::uint32_t indexCount = 0;  // three for each triangle, in either winding
};

/// The values are fixed, because renderers in other languages use them.
enum class TextureFormat : std::uint32_t {
  alpha8 = 0,  // one byte a pixel: opacity; its colour is white
  rgba8 = 1,   // four bytes a pixel: red, green, blue, alpha; not premultiplied
};

/// Pixels for a part of a texture. An upload for an id that the renderer does not know creates the texture,
/// whose size then never changes. The content of a new texture is undefined outside what was uploaded, and is
/// not drawn.
struct TextureUpload {
  TextureId texture = 0;
  TextureFormat format = TextureFormat::alpha8;
  std::int32_t textureWidth = 0;
  std::int32_t textureHeight = 0;
  PixelRect area;
  const std::uint8_t* bytes = nullptr;  // of the pixel at the top left of `area`
  std::size_t bytesPerRow = 0;          // from one row to the next
};

/// One frame. To draw it: apply `uploads` in order; draw `commands` in order, with the texture's colour
/// multiplied by the vertex's, and blended as `source * source alpha + target * (1 - source alpha)`; delete
/// `released`. Blend the bytes as they are, without converting them to linear light. Sample textures linearly
/// or by the nearest pixel, which gives the same picture; clamp at the edges.
///
/// As on a GPU, a triangle covers the pixels whose centres are inside it. If a centre is exactly on an edge
/// that two triangles share, only one of them covers the pixel.
///
/// After each list, a surface has at most two textures, one of each format. A texture that grows is replaced:
/// the new one is uploaded and the old one is released in the same list.
struct DrawList {
  /// Grows whenever what is drawn differs from the list before. While it stays the same, a renderer that
  /// keeps its last frame need not draw.
  std::uint64_t revision = 0;

  std::span<const DrawVertex> vertices;
  std::span<const std::uint32_t> indices;
  std::span<const DrawCommand> commands;

  /// What changed in the textures. Each upload is reported once: apply it even if the list is not drawn.
  std::span<const TextureUpload> uploads;

  /// Textures that this list and all later ones do not use. Each is reported once.
  std::span<const TextureId> released;
};

}  // namespace TalvoConsentSDK
