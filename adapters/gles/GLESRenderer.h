#pragma once

// Draws draw lists with OpenGL ES 2, which phones and browsers have. Needs no extension. A host may copy it.

#include <cstdint>
#include <unordered_map>

#include "TalvoConsentSDK/base/Export.h"

#include "adapters/draw/DrawList.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Draws the lists of one surface. The context must be current whenever a function is called.
class GLESRenderer {
 public:
  GLESRenderer() = default;
  GLESRenderer(const GLESRenderer&) = delete;
  GLESRenderer& operator=(const GLESRenderer&) = delete;
  ~GLESRenderer();

  /// Draws a list into the bound framebuffer, above what is there. `width` and `height` are the surface's
  /// size in pixels. Leaves the context as it was, except for the vertex attributes 0 to 2. In a context of
  /// version 3, no vertex array, sampler or unpack buffer may be bound, these attributes may have no divisor,
  /// and rasterizer discard must be off. Returns false if the context cannot draw.
  bool draw(const DrawList& list, std::int32_t width, std::int32_t height);

  /// Call it if the context was lost, even if there is no new one yet. Call `ConsentSurface::forgetTextures`,
  /// too.
  void forgetContext();

 private:
  struct Texture {
    unsigned name = 0;
    float isAlpha = 0;  // 1 if it has only opacity
  };

  bool prepare();
  void apply(const TextureUpload& upload);

  unsigned program_ = 0;
  unsigned vertices_ = 0;
  std::uint64_t revision_ = 0;  // of the list whose vertices are there
  std::unordered_map<TextureId, Texture> textures_;
};

}  // namespace TalvoConsentSDK
