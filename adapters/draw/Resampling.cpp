#include "adapters/draw/Resampling.h"

#include <algorithm>
#include <cmath>

namespace TalvoConsentSDK {

namespace {

constexpr std::size_t channels = 4;

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

// Scales the rows of premultiplied pixels, which `row` returns, and exchanges rows and columns, so that two
// calls scale both directions.
template <class Row>
std::vector<float> scaledAndTransposed(Row row, int width, int height, int newWidth) {
  const auto columns = static_cast<std::size_t>(newWidth);
  const auto rows = static_cast<std::size_t>(height);
  std::vector<float> result(columns * rows * channels);
  const std::vector<Mix> all = mixes(width, newWidth);
  for (std::size_t y = 0; y < rows; ++y) {
    const float* const pixels = row(y);
    for (std::size_t x = 0; x < columns; ++x) {
      float* const target = &result[(x * rows + y) * channels];
      const float* source = pixels + static_cast<std::size_t>(all[x].first) * channels;
      for (const float weight : all[x].weights) {
        for (std::size_t c = 0; c < channels; ++c) target[c] += weight * *source++;
      }
    }
  }
  return result;
}

}  // namespace

PixelImage resampled(const PixelImage& image, int width, int height) {
  if (image.width == width && image.height == height) return image;
  std::vector<float> line(static_cast<std::size_t>(image.width) * channels);
  const auto premultiplied = [&](std::size_t y) {
    const std::uint8_t* const bytes = &image.bytes[y * line.size()];
    for (std::size_t i = 0; i < line.size(); i += channels) {
      const float alpha = bytes[i + 3];
      for (std::size_t c = 0; c < 3; ++c) line[i + c] = static_cast<float>(bytes[i + c]) * alpha / 255;
      line[i + 3] = alpha;
    }
    return line.data();
  };
  const std::vector<float> columns = scaledAndTransposed(premultiplied, image.width, image.height, width);
  const std::size_t column = static_cast<std::size_t>(image.height) * channels;
  const std::vector<float> pixels =
      scaledAndTransposed([&](std::size_t x) { return &columns[x * column]; }, image.height, width, height);
  PixelImage result{width, height, std::vector<std::uint8_t>(pixels.size())};
  for (std::size_t i = 0; i < pixels.size(); i += channels) {
    const float alpha = pixels[i + 3];
    const auto byte = [](float value) {
      return static_cast<std::uint8_t>(std::clamp(value + 0.5F, 0.F, 255.F));
    };
    for (std::size_t c = 0; c < 3; ++c)
      result.bytes[i + c] = alpha > 0 ? byte(pixels[i + c] * 255 / alpha) : 0;
    result.bytes[i + 3] = byte(alpha);
  }
  return result;
}

}  // namespace TalvoConsentSDK
