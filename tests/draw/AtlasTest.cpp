// A texture of many pictures: whatever is added, grows and is forgotten, the renderer's copy shows each
// picture in use.

#include <map>
#include <random>

#include "adapters/draw/Atlas.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

struct Copy {
  int width = 0;
  std::vector<int> pixels;  // -1 where nothing was uploaded
};

class AtlasTest : public TestWithParam<std::array<std::string, 8>> {};
INSTANTIATE_TEST_SUITE_P(All, AtlasTest, ValuesIn(tableOf<8>("draw/atlas.txt")), byFirstCell);

TEST_P(AtlasTest, ShowsEachPictureInUse) {
  const auto& [name, maxSize, kindCount, perList, maxSide, pixels, finalSize, fits] = GetParam();
  const auto kinds = static_cast<std::uint32_t>(std::stoul(kindCount));
  std::mt19937 random(7);
  Atlas atlas(TextureFormat::alpha8, std::stoi(maxSize));
  std::map<TextureId, Copy> copies;
  int leftOut = 0;
  for (int list = 0; list < 60; ++list) {
    if (pixels == "released" && list % 3 == 0) atlas.releasePixels();
    if (list % 20 == 0 && list > 0) {
      atlas.forgetTexture();
      copies.clear();
    }
    atlas.beginList();
    std::map<std::uint32_t, AtlasPlace> used;
    const auto first = static_cast<std::uint32_t>(random() % kinds);
    for (std::uint32_t i = 0; i < std::stoul(perList); ++i) {
      const std::uint32_t kind = (first + i) % kinds;
      const AtlasKey key{kind};
      const AtlasPlace* place = atlas.find(key);
      const int side = 1 + static_cast<int>(kind * 7919U % std::stoul(maxSide));
      if (!place) {
        const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(side * side),
                                              static_cast<std::uint8_t>(1 + kind % 255));
        place = atlas.add(key, {0, 0, side, side}, bytes);
      }
      if (place) {
        used[kind] = *place;
      } else if (atlas.clear()) {
        used.clear();
        i = static_cast<std::uint32_t>(-1);  // begins the list again
      } else {
        ++leftOut;
      }
    }
    std::vector<TextureUpload> uploads;
    std::vector<TextureId> released;
    atlas.takeUploads(uploads, released);
    for (const TextureUpload& upload : uploads) {
      Copy& copy = copies[upload.texture];
      copy.width = upload.textureWidth;
      copy.pixels.resize(static_cast<std::size_t>(copy.width * upload.textureHeight), -1);
      for (int y = 0; y < upload.area.height; ++y) {
        for (int x = 0; x < upload.area.width; ++x) {
          copy.pixels[static_cast<std::size_t>((upload.area.y + y) * copy.width + upload.area.x + x)] =
              upload.bytes[static_cast<std::size_t>(y) * upload.bytesPerRow + static_cast<std::size_t>(x)];
        }
      }
    }
    for (const TextureId id : released) copies.erase(id);
    ASSERT_THAT(copies, SizeIs(1));
    const Copy& copy = copies.at(atlas.texture());
    for (const auto& [kind, place] : used) {
      for (int y = -1; y <= place.height; ++y) {
        for (int x = -1; x <= place.width; ++x) {
          const bool isInside = x >= 0 && y >= 0 && x < place.width && y < place.height;
          const int expected = isInside ? static_cast<int>(1 + kind % 255) : 0;  // around it a gap
          ASSERT_EQ(copy.pixels[static_cast<std::size_t>((place.y + y) * copy.width + place.x + x)], expected)
              << "picture " << kind << " in list " << list;
        }
      }
    }
  }
  EXPECT_EQ(std::to_string(atlas.width()) + " x " + std::to_string(atlas.height()), finalSize);
  EXPECT_EQ(leftOut == 0, fits == "fits");
}

}  // namespace
}  // namespace TalvoConsentSDK
