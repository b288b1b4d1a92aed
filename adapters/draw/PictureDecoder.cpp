#include "adapters/draw/PictureDecoder.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <png.h>
#include <turbojpeg.h>
#include <webp/decode.h>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// Larger pictures are rejected as a mistake: no logo needs them, and decoding takes memory for every pixel.
constexpr std::int64_t maxPixels = 16'000'000;
constexpr int keptSide = 2048;  // pixels; larger pictures are made smaller

PlatformError failure(const std::string& reason) {
  return {"PictureDecoder", 1, "The picture cannot be read: " + reason};
}

// Makes room for a picture of a size that its file claims to have.
std::optional<PixelImage> blank(std::int64_t width, std::int64_t height) {
  if (width <= 0 || height <= 0 || width > maxPixels || height > maxPixels || width * height > maxPixels)
    return {};
  return PixelImage{
      static_cast<int>(width), static_cast<int>(height),
      std::vector<std::uint8_t>(static_cast<std::size_t>(width * height) * PixelImage::channels)};
}

Result<PixelImage> decodedPNG(std::string_view bytes) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  const auto fail = [&] {
    std::string reason = png.message;
    png_image_free(&png);
    return failure(reason);
  };
  if (png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()) == 0) return fail();
  auto image = blank(png.width, png.height);
  if (!image) {
    png_image_free(&png);
    return failure("It is too large");
  }
  png.format = PNG_FORMAT_RGBA;
  if (png_image_finish_read(&png, nullptr, image->bytes.data(), 0, nullptr) == 0) return fail();
  return std::move(*image);
}

Result<PixelImage> decodedJPEG(std::string_view bytes) {
  const std::unique_ptr<void, int (*)(tjhandle)> decoder(tjInitDecompress(), tjDestroy);
  const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
  int width = 0, height = 0, sampling = 0, colors = 0;
  if (!decoder ||
      tjDecompressHeader3(decoder.get(), data, bytes.size(), &width, &height, &sampling, &colors) != 0) {
    return failure(tjGetErrorStr2(decoder.get()));
  }
  auto image = blank(width, height);
  if (!image) return failure("It is too large");
  // A file may repeat its scans without end, so their number is limited.
  if (tjDecompress2(decoder.get(), data, bytes.size(), image->bytes.data(), width, 0, height, TJPF_RGBA,
                    TJFLAG_LIMITSCANS) != 0) {
    return failure(tjGetErrorStr2(decoder.get()));
  }
  return std::move(*image);
}

Result<PixelImage> decodedWebP(std::string_view bytes) {
  const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  int width = 0, height = 0;
  if (WebPGetInfo(data, bytes.size(), &width, &height) == 0) return failure("Its header is damaged");
  auto image = blank(width, height);
  if (!image) return failure("It is too large");
  const int rowBytes = width * static_cast<int>(PixelImage::channels);
  if (!WebPDecodeRGBAInto(data, bytes.size(), image->bytes.data(), image->bytes.size(), rowBytes)) {
    return failure("Its content is damaged, or it is an animation");
  }
  return std::move(*image);
}

Result<PixelImage> decoded(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG")) return decodedPNG(bytes);
  if (bytes.starts_with("\xFF\xD8")) return decodedJPEG(bytes);
  if (bytes.starts_with("RIFF") && bytes.substr(std::min<std::size_t>(8, bytes.size())).starts_with("WEBP")) {
    return decodedWebP(bytes);
  }
  return failure("It is not PNG, JPEG or WebP");
}

}  // namespace

Result<std::shared_ptr<const Image>> decodedPicture(std::string_view bytes) {
  Result<PixelImage> image = decoded(bytes);
  if (!image) return image.error();
  const Size size{static_cast<double>(image->width), static_cast<double>(image->height)};
  const double share = std::min(1.0, keptSide / std::max(size.width, size.height));
  PixelImage kept = share < 1 ? resampled(*image, std::max(1, static_cast<int>(size.width * share)),
                                          std::max(1, static_cast<int>(size.height * share)))
                              : std::move(*image);
  return std::shared_ptr<const Image>(std::make_shared<DrawImage>(std::move(kept), size));
}

}  // namespace TalvoConsentSDK
