// Decodes any bytes as a picture from the network.

#include <string_view>

#include "adapters/draw/DrawImage.h"
#include "adapters/draw/PictureDecoder.h"

#include "fuzz/Fuzzing.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto decoded = decodedPicture({reinterpret_cast<const char*>(data), size});
  if (!decoded) {
    require(*decoded.error().what() != '\0', "an error says why");
    return 0;
  }
  const auto& image = static_cast<const DrawImage&>(**decoded);
  const PixelImage& pixels = image.pixels();
  require(pixels.width > 0 && pixels.height > 0, "a picture has pixels");
  require(pixels.bytes.size() ==
              static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height) * 4,
          "four bytes for each pixel");
  require(image.size().width * image.size().height <= 16e6, "larger pictures are refused");
  require(image.size().width >= pixels.width && image.size().height >= pixels.height,
          "a picture only becomes smaller");
  return 0;
}
