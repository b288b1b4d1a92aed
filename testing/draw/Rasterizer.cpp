#include "testing/draw/Rasterizer.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include <png.h>

namespace TalvoConsentSDK {

namespace {

void require(bool isGood, const char* rule) {
  if (!isGood) throw std::logic_error(rule);
}

double cross(const DrawVertex& a, const DrawVertex& b, double x, double y) {
  return (double{b.x} - a.x) * (y - a.y) - (double{b.y} - a.y) * (x - a.x);
}

}  // namespace

// What is interpolated between the corners of a triangle.
struct Rasterizer::Sample {
  std::array<double, 6> values{};  // position in the texture, red, green, blue, alpha

  static Sample of(const std::array<DrawVertex, 3>& corners, const std::array<double, 3>& weights,
                   double area) {
    Sample sample;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const DrawVertex& corner = corners[i];
      const double share = weights[i] / area;
      sample.values[0] += share * corner.u;
      sample.values[1] += share * corner.v;
      for (std::size_t c = 0; c < 4; ++c) sample.values[c + 2] += share * corner.color[c] / 255;
    }
    return sample;
  }
};

Rasterizer::Rasterizer(int width, int height, const Pixel& background)
    : width_(width), height_(height), background_(background) {
  clear();
}

void Rasterizer::clear() {
  pixels_.assign(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), background_);
}

void Rasterizer::apply(const DrawList& list) {
  for (const TextureUpload& upload : list.uploads) apply(upload);
  for (const TextureId id : list.released)
    require(textures_.erase(id) == 1, "An unknown texture is released");
}

void Rasterizer::apply(const TextureUpload& upload) {
  Texture& texture = textures_[upload.texture];
  if (texture.pixels.empty()) {
    texture = {upload.textureWidth, upload.textureHeight, {}};
    // Its content is undefined at first. This colour cannot be overlooked if it is drawn.
    texture.pixels.assign(static_cast<std::size_t>(texture.width) * static_cast<std::size_t>(texture.height),
                          {255, 0, 255, 255});
  }
  const PixelRect& area = upload.area;
  require(texture.width == upload.textureWidth && texture.height == upload.textureHeight,
          "A texture changes its size");
  require(area.x >= 0 && area.y >= 0 && area.width > 0 && area.height > 0 &&
              area.x + area.width <= texture.width && area.y + area.height <= texture.height,
          "An upload is outside its texture");
  for (int y = 0; y < area.height; ++y) {
    const std::uint8_t* byte = upload.bytes + static_cast<std::size_t>(y) * upload.bytesPerRow;
    for (int x = 0; x < area.width; ++x) {
      auto& pixel = texture.pixels[static_cast<std::size_t>((area.y + y) * texture.width + area.x + x)];
      pixel = {255, 255, 255, 255};
      for (std::size_t c = upload.format == TextureFormat::rgba8 ? 0 : 3; c < 4; ++c) pixel[c] = *byte++;
    }
  }
}

void Rasterizer::draw(const DrawList& list) {
  for (const DrawCommand& command : list.commands) {
    const PixelRect& clip = command.clip;
    const auto texture = textures_.find(command.texture);
    require(texture != textures_.end(), "A command needs an unknown texture");
    require(clip.width > 0 && clip.height > 0 && clip.x >= 0 && clip.y >= 0 &&
                clip.x + clip.width <= width_ && clip.y + clip.height <= height_,
            "A clip is empty or outside the surface");
    require(std::size_t{command.firstIndex} + command.indexCount <= list.indices.size() &&
                command.indexCount % 3 == 0,
            "A command needs indices that are missing");
    for (std::uint32_t i = 0; i < command.indexCount; i += 3) {
      std::array<DrawVertex, 3> corners;
      for (std::uint32_t k = 0; k < 3; ++k) {
        const std::uint32_t index = list.indices[command.firstIndex + i + k];
        require(index < list.vertices.size(), "An index is too large");
        corners[k] = list.vertices[index];
      }
      fill(corners, clip, texture->second);
    }
  }
}

void Rasterizer::fill(std::array<DrawVertex, 3> t, const PixelRect& clip, const Texture& texture) {
  double area = cross(t[0], t[1], t[2].x, t[2].y);
  if (area < 0) std::swap(t[1], t[2]);
  area = std::abs(area);
  if (area == 0) return;
  const auto [left, right] = std::ranges::minmax(t, {}, &DrawVertex::x);
  const auto [top, bottom] = std::ranges::minmax(t, {}, &DrawVertex::y);
  const double firstX = std::max<double>(clip.x, std::floor(left.x));
  const double lastX = std::min<double>(clip.x + clip.width, std::ceil(right.x));
  const double firstY = std::max<double>(clip.y, std::floor(top.y));
  const double lastY = std::min<double>(clip.y + clip.height, std::ceil(bottom.y));
  if (firstX >= lastX) return;
  // The weight of each corner belongs to the edge across from it. A pixel on an edge belongs to the triangle
  // whose upper or left edge it is.
  std::array<bool, 3> isTopOrLeft{};
  std::array<double, 3> step{};
  for (std::size_t i = 0; i < 3; ++i) {
    const DrawVertex& a = t[(i + 1) % 3];
    const DrawVertex& b = t[(i + 2) % 3];
    isTopOrLeft[i] = (a.y == b.y && b.x > a.x) || b.y < a.y;
    step[i] = double{a.y} - b.y;
  }
  const Sample change = Sample::of(t, step, area);
  for (double y = firstY; y < lastY; ++y) {
    std::array<double, 3> weight{};  // times the area, so that it is exactly 0 on an edge
    for (std::size_t i = 0; i < 3; ++i)
      weight[i] = cross(t[(i + 1) % 3], t[(i + 2) % 3], firstX + 0.5, y + 0.5);
    Sample sample = Sample::of(t, weight, area);
    Pixel* target = &pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                             static_cast<std::size_t>(firstX)];
    for (double x = firstX; x < lastX; ++x, ++target) {
      bool isInside = true;
      for (std::size_t i = 0; i < 3; ++i) {
        isInside = isInside && (weight[i] > 0 || (weight[i] == 0 && isTopOrLeft[i]));
        weight[i] += step[i];
      }
      if (isInside) blend(*target, sample, texture);
      for (std::size_t c = 0; c < sample.values.size(); ++c) sample.values[c] += change.values[c];
    }
  }
}

std::array<float, 4> Rasterizer::sample(const Texture& texture, double u, double v) {
  const double x = u * texture.width - 0.5;
  const double y = v * texture.height - 0.5;
  std::array<float, 4> mixed{};
  for (const int dy : {0, 1}) {
    const double row = std::floor(y) + dy;
    const double rowShare = 1 - std::abs(y - row);
    if (rowShare < 1e-3) continue;
    for (const int dx : {0, 1}) {
      const double column = std::floor(x) + dx;
      const double share = rowShare * (1 - std::abs(x - column));
      if (share < 1e-3) continue;
      const auto inside = [](double place, int size) {
        return static_cast<std::size_t>(std::clamp(place, 0.0, size - 1.0));
      };
      const auto& pixel =
          texture.pixels[inside(row, texture.height) * static_cast<std::size_t>(texture.width) +
                         inside(column, texture.width)];
      for (std::size_t c = 0; c < 4; ++c) mixed[c] += static_cast<float>(share * pixel[c] / 255);
    }
  }
  return mixed;
}

void Rasterizer::blend(Pixel& target, const Sample& sample, const Texture& texture) {
  const auto& values = sample.values;
  const std::array<float, 4> texel = Rasterizer::sample(texture, values[0], values[1]);
  const float alpha = static_cast<float>(values[5]) * texel[3];
  for (std::size_t c = 0; c < 3; ++c) {
    target[c] += (static_cast<float>(values[c + 2]) * texel[c] - target[c]) * alpha;
  }
}

bool Rasterizer::save(const std::string& file) const {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(pixels_.size() * 3);
  for (const Pixel& pixel : pixels_) {
    for (const float each : pixel)
      bytes.push_back(static_cast<std::uint8_t>(std::lround(std::clamp(each, 0.0F, 1.0F) * 255)));
  }
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(width_);
  png.height = static_cast<png_uint_32>(height_);
  png.format = PNG_FORMAT_RGB;
  return png_image_write_to_file(&png, file.c_str(), 0, bytes.data(), 0, nullptr) != 0;
}

}  // namespace TalvoConsentSDK
