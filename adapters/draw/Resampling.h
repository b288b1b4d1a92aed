#pragma once

// Pictures in memory, and how they are scaled.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TalvoConsentSDK {

/// Red, green, blue and alpha of each pixel, not premultiplied, row by row.
struct PixelImage {
  static constexpr std::size_t channels = 4;

  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> bytes{};
};

/// Returns a picture scaled to a size of at least one pixel. Smaller pictures show the mean of the pixels
/// that they replace, larger ones mix neighbours. Pixels that are clear lend no colour to their neighbours.
PixelImage resampled(const PixelImage& image, int width, int height);

}  // namespace TalvoConsentSDK
