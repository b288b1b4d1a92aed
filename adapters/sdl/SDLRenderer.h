#pragma once

// Draws draw lists with SDL's own renderer. A host may copy it.

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

#include "adapters/draw/DrawList.h"

struct SDL_Renderer;
struct SDL_Texture;

namespace TalvoConsentSDK TALVO_EXPORT {

/// Draws the lists of one surface. Use it on the renderer's thread, and destroy it before `renderer`.
class SDLRenderer {
 public:
  explicit SDLRenderer(SDL_Renderer* renderer) : renderer_(renderer) {}
  SDLRenderer(const SDLRenderer&) = delete;
  SDLRenderer& operator=(const SDLRenderer&) = delete;
  ~SDLRenderer() { forgetTextures(); }

  /// Draws a list into the renderer's target, above what is there. Positions are in pixels of the target,
  /// whatever viewport, clip, scale and logical size the host has set; these are restored. If the host set a
  /// viewport or clip at one scale and then another scale, it may lose a fraction of a pixel. Returns false
  /// if SDL failed at something, and draws the rest; SDL_GetError then says why.
  bool draw(const DrawList& list);

  /// Call it when SDL reports that the device was reset. Call `ConsentSurface::forgetTextures`, too.
  void forgetTextures();

 private:
  bool apply(const TextureUpload& upload);

  SDL_Renderer* const renderer_;
  std::unordered_map<TextureId, SDL_Texture*> textures_;
  std::vector<std::uint32_t> pixels_;  // of one upload
};

}  // namespace TalvoConsentSDK
