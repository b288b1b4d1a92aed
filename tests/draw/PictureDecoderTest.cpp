// Pictures from the network: the formats that are read, and files that mean harm.

#include "adapters/draw/PictureDecoder.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

// A red picture of 16 by 16 pixels, opaque in its left half; JPEG cannot be translucent.
constexpr int side = 16;
std::string redPicture(const std::string& format) {
  return contentOf(TALVO_TEST_DATA "/golden/images/half_red." + format);
}

class PictureFormatTest : public TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(All, PictureFormatTest, ::testing::Values("png", "jpg", "webp"),
                         [](const auto& each) { return each.param; });

TEST_P(PictureFormatTest, IsReadAndSurvivesDamage) {
  const std::string file = redPicture(GetParam());
  const auto decoded = decodedPicture(file);
  ASSERT_TRUE(decoded) << decoded.error().what();
  EXPECT_EQ((*decoded)->size(), (Size{side, side}));
  const auto& pixels = static_cast<const DrawImage&>(**decoded).pixels().bytes;
  EXPECT_NEAR(pixels[0], 250, 6);
  EXPECT_NEAR(pixels[2], 20, 6);
  EXPECT_EQ(pixels[side * 4 - 1], GetParam() == "jpg"s ? 255 : 0);
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
  std::string file = redPicture("png");
  ASSERT_TRUE(decodedPicture(file));
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
