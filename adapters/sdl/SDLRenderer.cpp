#include "adapters/sdl/SDLRenderer.h"

#include <cstddef>

#include <SDL.h>

namespace TalvoConsentSDK {

namespace {

// A viewport or a clip rectangle. SDL keeps it in pixels, which may be fractions, but takes and returns whole
// units of the renderer's scale. So it is read twice, and set by the scale at which nothing was lost.
struct HostRect {
  bool isExact(float scaleX, float scaleY) const {
    const auto pixels = [](int units, float scale) {
      return static_cast<int>(static_cast<float>(units) * scale);
    };
    return pixels(scaled.x, scaleX) == whole.x && pixels(scaled.y, scaleY) == whole.y &&
           pixels(scaled.w, scaleX) == whole.w && pixels(scaled.h, scaleY) == whole.h;
  }

  SDL_Rect scaled = {};  // in units of the host's scale
  SDL_Rect whole = {};   // in pixels
};

// The parts of a renderer that the host may have set. Restored at the end of the scope.
class HostState {
 public:
  explicit HostState(SDL_Renderer* renderer) : renderer_(renderer) {
    SDL_RenderGetLogicalSize(renderer, &logicalWidth_, &logicalHeight_);
    SDL_RenderGetScale(renderer, &scaleX_, &scaleY_);
    SDL_RenderGetViewport(renderer, &viewport_.scaled);
    SDL_RenderGetClipRect(renderer, &clip_.scaled);
    isClipped_ = SDL_RenderIsClipEnabled(renderer);
    SDL_RenderSetScale(renderer, 1, 1);
    SDL_RenderGetViewport(renderer, &viewport_.whole);
    SDL_RenderGetClipRect(renderer, &clip_.whole);
    if (logicalWidth_ > 0) SDL_RenderSetLogicalSize(renderer, 0, 0);
    SDL_RenderSetViewport(renderer, nullptr);
    SDL_RenderSetScale(renderer, 1, 1);
  }
  HostState(const HostState&) = delete;
  HostState& operator=(const HostState&) = delete;
  ~HostState() {
    SDL_RenderSetLogicalSize(renderer_, logicalWidth_, logicalHeight_);
    SDL_RenderSetScale(renderer_, 1, 1);
    // A logical size brings a viewport of its own, which needs no setting unless the host has changed it
    // since.
    SDL_Rect own{};
    SDL_RenderGetViewport(renderer_, &own);
    if (!SDL_RectEquals(&own, &viewport_.whole)) restore(viewport_, SDL_RenderSetViewport);
    if (isClipped_) {
      restore(clip_, SDL_RenderSetClipRect);
    } else {
      SDL_RenderSetClipRect(renderer_, nullptr);
    }
    SDL_RenderSetScale(renderer_, scaleX_, scaleY_);
  }

 private:
  void restore(const HostRect& rect, int (*set)(SDL_Renderer*, const SDL_Rect*)) const {
    if (!rect.isExact(scaleX_, scaleY_)) {
      set(renderer_, &rect.whole);
      return;
    }
    SDL_RenderSetScale(renderer_, scaleX_, scaleY_);
    set(renderer_, &rect.scaled);
    SDL_RenderSetScale(renderer_, 1, 1);
  }

  SDL_Renderer* const renderer_;
  int logicalWidth_ = 0;
  int logicalHeight_ = 0;
  float scaleX_ = 1;
  float scaleY_ = 1;
  HostRect viewport_;
  HostRect clip_;
  SDL_bool isClipped_ = SDL_FALSE;
};

}  // namespace

void SDLRenderer::forgetTextures() {
  for (const auto& [id, texture] : textures_) SDL_DestroyTexture(texture);
  textures_.clear();
}

bool SDLRenderer::apply(const TextureUpload& upload) {
  SDL_Texture*& texture = textures_[upload.texture];
  if (!texture) {
    // Every back end of SDL has this format. It has none for opacity alone.
    texture = SDL_CreateTexture(renderer_, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STATIC,
                                upload.textureWidth, upload.textureHeight);
    if (!texture) return false;
    SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_BLEND);
    SDL_SetTextureScaleMode(texture, SDL_ScaleModeNearest);
  }
  pixels_.clear();
  const SDL_Rect area{upload.area.x, upload.area.y, upload.area.width, upload.area.height};
  for (int y = 0; y < area.h; ++y) {
    const std::uint8_t* byte = upload.bytes + static_cast<std::size_t>(y) * upload.bytesPerRow;
    for (int x = 0; x < area.w; ++x) {
      if (upload.format == TextureFormat::alpha8) {
        pixels_.push_back(std::uint32_t{*byte++} << 24U | 0xFFFFFFU);
      } else {
        pixels_.push_back(std::uint32_t{byte[3]} << 24U | std::uint32_t{byte[0]} << 16U |
                          std::uint32_t{byte[1]} << 8U | byte[2]);
        byte += 4;
      }
    }
  }
  return SDL_UpdateTexture(texture, &area, pixels_.data(), area.w * 4) == 0;
}

bool SDLRenderer::draw(const DrawList& list) {
  bool isDrawn = true;
  for (const TextureUpload& upload : list.uploads) isDrawn = apply(upload) && isDrawn;
  if (!list.commands.empty()) {
    const HostState state(renderer_);
    const DrawVertex* const first = list.vertices.data();
    constexpr int stride = sizeof(DrawVertex);
    for (const DrawCommand& command : list.commands) {
      const SDL_Rect clip{command.clip.x, command.clip.y, command.clip.width, command.clip.height};
      const auto texture = textures_.find(command.texture);
      if (texture == textures_.end() || !texture->second) continue;
      SDL_RenderSetClipRect(renderer_, &clip);
      const int result = SDL_RenderGeometryRaw(renderer_, texture->second, &first->x, stride,
                                               reinterpret_cast<const SDL_Color*>(first->color), stride,
                                               &first->u, stride, static_cast<int>(list.vertices.size()),
                                               list.indices.data() + command.firstIndex,
                                               static_cast<int>(command.indexCount), sizeof(std::uint32_t));
      isDrawn = result == 0 && isDrawn;
    }
  }
  for (const TextureId id : list.released) {
    if (const auto texture = textures_.extract(id)) SDL_DestroyTexture(texture.mapped());
  }
  return isDrawn;
}

}  // namespace TalvoConsentSDK
