#pragma once

// Draws draw lists in memory, pixel by pixel, as a renderer with linear sampling does.

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "adapters/draw/DrawList.h"

namespace TalvoConsentSDK {

/// Its functions throw std::logic_error if a list breaks the rules of DrawList.h.
class Rasterizer {
 public:
  using Pixel = std::array<float, 3>;  // red, green and blue, from 0 to 1

  Rasterizer(int width, int height, const Pixel& background);

  /// Takes over what changed in the textures.
  void apply(const DrawList& list);

  /// Removes what was drawn.
  void clear();

  /// Draws above what was drawn before.
  void draw(const DrawList& list);

  const Pixel& at(int x, int y) const { return pixels_[static_cast<std::size_t>(y * width_ + x)]; }
  std::size_t textureCount() const { return textures_.size(); }

  /// Saves the picture as a PNG. Returns false if the file cannot be written.
  bool save(const std::string& file) const;

 private:
  struct Texture {
    int width = 0;
    int height = 0;
    std::vector<std::array<std::uint8_t, 4>> pixels;
  };
  struct Sample;

  void apply(const TextureUpload& upload);
  void fill(std::array<DrawVertex, 3> corners, const PixelRect& clip, const Texture& texture);
  static std::array<float, 4> sample(const Texture& texture, double u, double v);
  static void blend(Pixel& target, const Sample& sample, const Texture& texture);

  int width_;
  int height_;
  Pixel background_;
  std::vector<Pixel> pixels_;
  std::map<TextureId, Texture> textures_;
};

}  // namespace TalvoConsentSDK
