#pragma once

// Draws draw lists in memory, pixel by pixel, as a renderer with linear sampling does.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <png.h>

#include "adapters/draw/DrawList.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

class Rasterizer {
 public:
  using Pixel = std::array<double, 4>;  // from 0 to 1

  Rasterizer(int width, int height, const Pixel& background)
      : width_(width), height_(height), background_(background) {}

  /// Takes over what changed in the textures. Fails the test, as `draw` does, if a list breaks the rules of
  /// DrawList.h.
  void apply(const DrawList& list) {
    for (const TextureUpload& upload : list.uploads) apply(upload);
    for (const TextureId id : list.released) EXPECT_EQ(textures_.erase(id), 1U);
  }

  void draw(const DrawList& list) {
    pixels_.assign(static_cast<std::size_t>(width_ * height_), background_);
    for (const DrawCommand& command : list.commands) {
      ASSERT_TRUE(textures_.contains(command.texture));
      ASSERT_GT(command.clip.width * command.clip.height, 0);
      ASSERT_LE(std::size_t{command.firstIndex} + command.indexCount, list.indices.size());
      for (std::uint32_t i = 0; i < command.indexCount; i += 3) {
        std::array<DrawVertex, 3> corners;
        for (std::uint32_t k = 0; k < 3; ++k)
          corners[k] = list.vertices[list.indices[command.firstIndex + i + k]];
        fill(corners, command.clip, textures_.at(command.texture));
      }
    }
  }

  Pixel at(int x, int y) const { return pixels_[static_cast<std::size_t>(y * width_ + x)]; }
  std::size_t textureCount() const { return textures_.size(); }

  void save(const std::string& file) const {
    std::vector<std::uint8_t> bytes;
    for (const Pixel& pixel : pixels_) {
      for (std::size_t c = 0; c < 3; ++c)
        bytes.push_back(static_cast<std::uint8_t>(std::lround(pixel[c] * 255)));
    }
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(width_);
    png.height = static_cast<png_uint_32>(height_);
    png.format = PNG_FORMAT_RGB;
    EXPECT_NE(png_image_write_to_file(&png, file.c_str(), 0, bytes.data(), 0, nullptr), 0) << file;
  }

 private:
  struct Texture {
    int width = 0;
    int height = 0;
    std::vector<Pixel> pixels;
  };

  void apply(const TextureUpload& upload) {
    Texture& texture = textures_[upload.texture];
    if (texture.pixels.empty()) {
      texture = {upload.textureWidth, upload.textureHeight, {}};
      const Pixel undefined{1, 0, 1, 1};  // cannot be overlooked if it is drawn
      texture.pixels.assign(static_cast<std::size_t>(texture.width * texture.height), undefined);
    }
    const PixelRect& area = upload.area;
    ASSERT_TRUE(area.x >= 0 && area.y >= 0 && area.x + area.width <= texture.width &&
                area.y + area.height <= texture.height);
    for (int y = 0; y < area.height; ++y) {
      const std::uint8_t* byte = upload.bytes + static_cast<std::size_t>(y) * upload.bytesPerRow;
      for (int x = 0; x < area.width; ++x) {
        Pixel& pixel = texture.pixels[static_cast<std::size_t>((area.y + y) * texture.width + area.x + x)];
        pixel = {1, 1, 1, 1};
        const bool isColored = upload.format == TextureFormat::rgba8;
        for (std::size_t c = isColored ? 0 : 3; c < 4; ++c) pixel[c] = *byte++ / 255.0;
      }
    }
  }

  static Pixel sample(const Texture& texture, double u, double v) {
    const double x = u * texture.width - 0.5;
    const double y = v * texture.height - 0.5;
    Pixel mixed{};
    for (const int dy : {0, 1}) {
      for (const int dx : {0, 1}) {
        const double column = std::floor(x) + dx;
        const double row = std::floor(y) + dy;
        const double share = (1 - std::abs(x - column)) * (1 - std::abs(y - row));
        if (share < 1e-4) continue;
        const auto inside = [](double place, int size) {
          return static_cast<int>(std::clamp(place, 0.0, size - 1.0));
        };
        const Pixel& pixel = texture.pixels[static_cast<std::size_t>(
            inside(row, texture.height) * texture.width + inside(column, texture.width))];
        for (std::size_t c = 0; c < 4; ++c) mixed[c] += share * pixel[c];
      }
    }
    return mixed;
  }

  void fill(std::array<DrawVertex, 3>& t, const PixelRect& clip, const Texture& texture) {
    const auto cross = [](const DrawVertex& a, const DrawVertex& b, double x, double y) {
      return (b.x - a.x) * (y - a.y) - (b.y - a.y) * (x - a.x);
    };
    double area = cross(t[0], t[1], t[2].x, t[2].y);
    if (area < 0) std::swap(t[1], t[2]);
    area = std::abs(area);
    if (area == 0) return;
    const auto [left, right] = std::ranges::minmax(t, {}, &DrawVertex::x);
    const auto [top, bottom] = std::ranges::minmax(t, {}, &DrawVertex::y);
    const int firstX = std::max(clip.x, static_cast<int>(std::floor(left.x)));
    const int lastX = std::min(clip.x + clip.width, static_cast<int>(std::ceil(right.x)));
    const int firstY = std::max(clip.y, static_cast<int>(std::floor(top.y)));
    const int lastY = std::min(clip.y + clip.height, static_cast<int>(std::ceil(bottom.y)));
    for (int y = firstY; y < lastY; ++y) {
      for (int x = firstX; x < lastX; ++x) {
        std::array<double, 3> weight{};
        bool isInside = true;
        for (std::size_t i = 0; i < 3; ++i) {  // the weight of corner i belongs to the edge across from it
          const DrawVertex& a = t[(i + 1) % 3];
          const DrawVertex& b = t[(i + 2) % 3];
          weight[i] = cross(a, b, x + 0.5, y + 0.5) / area;
          const bool isTopOrLeft = (a.y == b.y && b.x > a.x) || b.y < a.y;
          isInside = isInside && (weight[i] > 0 || (weight[i] == 0 && isTopOrLeft));
        }
        if (isInside) blend(pixels_[static_cast<std::size_t>(y * width_ + x)], t, weight, texture);
      }
    }
  }

  static void blend(Pixel& target, const std::array<DrawVertex, 3>& t, const std::array<double, 3>& weight,
                    const Texture& texture) {
    double u = 0, v = 0;
    Pixel color{};
    for (std::size_t i = 0; i < 3; ++i) {
      u += weight[i] * t[i].u;
      v += weight[i] * t[i].v;
      for (std::size_t c = 0; c < 4; ++c) color[c] += weight[i] * t[i].color[c] / 255;
    }
    const Pixel texel = sample(texture, u, v);
    const double alpha = color[3] * texel[3];
    for (std::size_t c = 0; c < 3; ++c) target[c] = color[c] * texel[c] * alpha + target[c] * (1 - alpha);
  }

  const int width_;
  const int height_;
  const Pixel background_;
  std::vector<Pixel> pixels_;
  std::map<TextureId, Texture> textures_;
};

}  // namespace TalvoConsentSDK
