#pragma once

// Pictures as bytes: red, green and blue of each pixel.

#include <cstdint>
#include <string>
#include <vector>

#include <png.h>

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using Bytes = std::vector<std::uint8_t>;

/// Saves NAME.png in the tests' temporary folder, so that it can be looked at.
inline void savePicture(const std::string& name, int width, int height, const Bytes& bytes) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = static_cast<png_uint_32>(width);
  png.height = static_cast<png_uint_32>(height);
  png.format = PNG_FORMAT_RGB;
  const std::string file = ::testing::TempDir() + name + ".png";
  EXPECT_NE(png_image_write_to_file(&png, file.c_str(), 0, bytes.data(), 0, nullptr), 0) << file;
}

}  // namespace TalvoConsentSDK
