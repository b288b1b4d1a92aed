#include "adapters/draw/Resampling.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TalvoConsentSDK {

namespace {

constexpr std::size_t channels = PixelImage::channels;

// The pixels of a row or a column that are mixed to one pixel, and their weights, which add up to 1.
struct Mix {
  int first = 0;
  std::vector<float> weights;
};

std::vector<Mix> mixes(int from, int to) {
  std::vector<Mix> all(static_cast<std::size_t>(to));
  const double step = static_cast<double>(from) / to;
  const double reach = std::max(1.0, step);
  for (int i = 0; i < to; ++i) {
    const double center = (i + 0.5) * step - 0.5;
    const int first = std::max(0, static_cast<int>(std::ceil(center - reach)));
    const int last = std::min(from - 1, static_cast<int>(std::floor(center + reach)));
    Mix& mix = all[static_cast<std::size_t>(i)];
    mix.first = first;
    double sum = 0;
    for (int x = first; x <= last; ++x) sum += std::max(0.0, 1 - std::abs(x - center) / reach);
    for (int x = first; x <= last; ++x) {
      mix.weights.push_back(static_cast<float>(std::max(0.0, 1 - std::abs(x - center) / reach) / sum));
    }
  }
  return all;
}

std::uint8_t byte(float value) {
  return static_cast<std::uint8_t>(std::clamp(value + 0.5F, 0.F, 255.F));
}

}  // namespace

PixelImage resampled(const PixelImage& image, int width, int height) {
  if (image.width == width && image.height == height) return image;
  const std::vector<Mix> columns = mixes(image.width, width);
  PixelImage result{width, height, {}};
  result.bytes.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * channels);
  std::vector<float> line;  // a row of the result, premultiplied, but still as wide as the picture
  for (const Mix& row : mixes(image.height, height)) {
    line.assign(static_cast<std::size_t>(image.width) * channels, 0);
    const std::uint8_t* source = &image.bytes[static_cast<std::size_t>(row.first) * line.size()];
    for (const float weight : row.weights) {
      for (std::size_t i = 0; i < line.size(); i += channels, source += channels) {
        const float alpha = weight * static_cast<float>(source[3]);
        for (std::size_t c = 0; c < 3; ++c) line[i + c] += alpha * static_cast<float>(source[c]) / 255;
        line[i + 3] += alpha;
      }
    }
    for (const Mix& column : columns) {
      std::array<float, channels> mixed{};
      const float* from = &line[static_cast<std::size_t>(column.first) * channels];
      for (const float weight : column.weights) {
        for (float& each : mixed) each += weight * *from++;
      }
      const float alpha = mixed[3];
      for (std::size_t c = 0; c < 3; ++c)
        result.bytes.push_back(alpha > 0 ? byte(mixed[c] * 255 / alpha) : std::uint8_t{0});
      result.bytes.push_back(byte(alpha));
    }
  }
  return result;
}

}  // namespace TalvoConsentSDK
