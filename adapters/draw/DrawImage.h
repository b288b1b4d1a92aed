#pragma once

// A picture from the network, decoded.

#include <atomic>
#include <cstdint>
#include <utility>

#include "TalvoConsentSDK/platform/ImageLoader.h"

#include "adapters/draw/Resampling.h"

namespace TalvoConsentSDK {

class DrawImage : public platform::Image {
 public:
  /// `size` is that of the picture before it was made smaller to save memory, if it was.
  DrawImage(PixelImage pixels, platform::Size size)
      : pixels_(std::move(pixels)), size_(size), id_(++lastId()) {}

  platform::Size size() const override { return size_; }
  const PixelImage& pixels() const { return pixels_; }
  std::uint32_t id() const { return id_; }  // unique in the process

 private:
  static std::atomic<std::uint32_t>& lastId() {
    static std::atomic<std::uint32_t> last{0};
    return last;
  }

  const PixelImage pixels_;
  const platform::Size size_;
  const std::uint32_t id_;
};

}  // namespace TalvoConsentSDK
