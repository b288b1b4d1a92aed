// Pictures from the network: the formats that are read, and files that mean harm.

#include <png.h>
#include <turbojpeg.h>
#include <webp/encode.h>

#include "adapters/draw/PictureDecoder.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

constexpr int side = 16;

// A red picture, opaque in its left half; JPEG cannot be translucent.
PixelImage redPicture() {
  PixelImage image{side, side, {}};
  for (int i = 0; i < side * side; ++i) {
    const bool isLeft = i % side < side / 2;
    image.bytes.insert(image.bytes.end(), {250, 10, 20, static_cast<std::uint8_t>(isLeft ? 255 : 0)});
  }
  return image;
}

std::string encodedPNG() {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = png.height = side;
  png.format = PNG_FORMAT_RGBA;
  png_alloc_size_t size = 4096;
  std::string bytes(size, '\0');
  EXPECT_NE(png_image_write_to_memory(&png, bytes.data(), &size, 0, redPicture().bytes.data(), 0, nullptr),
            0);
  return bytes.substr(0, size);
}

std::string encodedJPEG() {
  const tjhandle encoder = tjInitCompress();
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  EXPECT_EQ(tjCompress2(encoder, redPicture().bytes.data(), side, 0, side, TJPF_RGBA, &bytes, &size,
                        TJSAMP_444, 95, 0),
            0);
  std::string result(reinterpret_cast<char*>(bytes), size);
  tjFree(bytes);
  tjDestroy(encoder);
  return result;
}

std::string encodedWebP() {
  std::uint8_t* bytes = nullptr;
  const std::size_t size = WebPEncodeLosslessRGBA(redPicture().bytes.data(), side, side, side * 4, &bytes);
  std::string result(reinterpret_cast<char*>(bytes), size);
  WebPFree(bytes);
  return result;
}

const struct Format {
  const char* name;
  std::string (*encode)();
  bool hasAlpha;
} formats[] = {{"PNG", encodedPNG, true}, {"JPEG", encodedJPEG, false}, {"WebP", encodedWebP, true}};

class PictureFormatTest : public TestWithParam<Format> {};
INSTANTIATE_TEST_SUITE_P(All, PictureFormatTest, ValuesIn(formats), byName);

TEST_P(PictureFormatTest, IsReadAndSurvivesDamage) {
  const std::string file = GetParam().encode();
  const auto decoded = decodedPicture(file);
  ASSERT_TRUE(decoded) << decoded.error().what();
  EXPECT_EQ((*decoded)->size(), (Size{side, side}));
  const auto& pixels = static_cast<const DrawImage&>(**decoded).pixels().bytes;
  EXPECT_NEAR(pixels[0], 250, 6);
  EXPECT_NEAR(pixels[2], 20, 6);
  EXPECT_EQ(pixels[side * 4 - 1], GetParam().hasAlpha ? 0 : 255);
  for (std::size_t length = 0; length < file.size(); ++length) {
    const auto cut = decodedPicture(file.substr(0, length));
    EXPECT_TRUE(!cut || (*cut)->size() == (Size{side, side})) << length;
    std::string damaged = file;
    damaged[length] = static_cast<char>(~damaged[length]);
    const auto read = decodedPicture(damaged);
    EXPECT_TRUE(!read || (*read)->size().width <= 16'000'000) << length;
  }
}

TEST(PictureDecoderTest, RefusesWhatWouldTakeTooMuchMemory) {
  std::string file = encodedPNG();
  file.replace(16, 8, std::string("\x00\x00\xFF\xFF\x00\x00\xFF\xFF", 8));  // 65,535 pixels wide and high
  EXPECT_FALSE(decodedPicture(file));
  EXPECT_FALSE(decodedPicture("GIF89a"));
  EXPECT_FALSE(decodedPicture(""));
}

TEST(ResamplingTest, ClearPixelsLendNoColor) {
  PixelImage image{4, 4, {}};
  for (int i = 0; i < 16; ++i) {
    const bool isLeft = i % 4 < 2;
    const std::uint8_t red = isLeft ? 200 : 0;
    image.bytes.insert(image.bytes.end(), {red, 0, 0, static_cast<std::uint8_t>(isLeft ? 255 : 0)});
  }
  for (const int size : {1, 2, 3, 9}) {
    const PixelImage scaled = resampled(image, size, size);
    ASSERT_THAT(scaled.bytes, SizeIs(static_cast<std::size_t>(size * size * 4)));
    for (std::size_t i = 0; i < scaled.bytes.size(); i += 4) {
      const bool isClear = scaled.bytes[i + 3] <= 3;
      EXPECT_NEAR(scaled.bytes[i], 200, isClear ? 255 : 1) << size;
    }
  }
}

}  // namespace
}  // namespace TalvoConsentSDK
