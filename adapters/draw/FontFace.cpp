#include "adapters/draw/FontFace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <mutex>
#include <utility>

#include <ft2build.h>
#include <hb-ot.h>
#include <hb.h>

#include FT_FREETYPE_H
#include FT_MODULE_H
#include FT_MULTIPLE_MASTERS_H
#include FT_OUTLINE_H

#include "adapters/draw/Resampling.h"

namespace TalvoConsentSDK {

namespace {

constexpr std::array wantedWeights{400, 500, 600, 700};  // those that the banner's texts have
constexpr unsigned maxMembers = 64;     // of a collection; a damaged one may claim any number
constexpr double maxFontPixels = 1000;  // FreeType's rasteriser takes time for every pixel

std::shared_ptr<FT_LibraryRec_> freeType() {
  static std::mutex lock;
  static std::weak_ptr<FT_LibraryRec_> shared;
  const std::scoped_lock guard(lock);
  if (auto library = shared.lock()) return library;
  FT_Library made = nullptr;
  if (FT_Init_FreeType(&made) != 0) return nullptr;
  const std::shared_ptr<FT_LibraryRec_> library(made, FT_Done_FreeType);
  // Otherwise small letters of OpenType fonts are too thin.
  const FT_Bool isThin = 0;
  FT_Property_Set(made, "cff", "no-stem-darkening", &isThin);
  shared = library;
  return library;
}

// `owner` keeps the bytes.
hb_blob_t* blobOf(std::string_view bytes, std::shared_ptr<const void> owner) {
  using Owner = std::shared_ptr<const void>;
  if (bytes.size() > std::numeric_limits<unsigned>::max()) return hb_blob_get_empty();
  return hb_blob_create(bytes.data(), static_cast<unsigned>(bytes.size()), HB_MEMORY_MODE_READONLY,
                        new Owner(std::move(owner)), [](void* data) { delete static_cast<Owner*>(data); });
}

std::string familyOf(hb_face_t* face) {
  std::array<char, 128> name{};
  for (const hb_ot_name_id_t id : {HB_OT_NAME_ID_TYPOGRAPHIC_FAMILY, HB_OT_NAME_ID_FONT_FAMILY}) {
    unsigned size = name.size();
    if (hb_ot_name_get_utf8(face, id, hb_language_from_string("en", -1), &size, name.data()) > 0)
      return name.data();
  }
  return {};
}

}  // namespace

std::vector<std::unique_ptr<FontFace>> FontFace::open(const FontSource& source) {
  std::vector<std::unique_ptr<FontFace>> faces;
  const auto file = source.bytes ? nullptr : FontFile::open(source.path);
  hb_blob_t* const blob = source.bytes ? blobOf(*source.bytes, source.bytes)
                          : file       ? blobOf(file->bytes(), file)
                                       : hb_blob_create_from_file(source.path.c_str());
  const unsigned count = std::min(hb_face_count(blob), maxMembers);
  for (unsigned index = 0; index < count; ++index) {
    for (const int weight : wantedWeights) {
      auto face = open(blob, index, weight);
      // Without a weight axis, all weights are the same font.
      const bool isKnown = face && !faces.empty() && faces.back()->family == face->family &&
                           faces.back()->weight == face->weight;
      if (!face || isKnown) break;
      face->path = source.path;
      face->file_ = file;
      faces.push_back(std::move(face));
    }
  }
  hb_blob_destroy(blob);
  return faces;
}

std::unique_ptr<FontFace> FontFace::open(hb_blob_t* blob, unsigned index, int wantedWeight) {
  static std::uint32_t lastId = 0;
  std::unique_ptr<FontFace> opened(new FontFace);
  opened->blob_ = hb_blob_reference(blob);
  opened->index_ = index;
  hb_face_t* const face = hb_face_create(blob, index);
  opened->shaper_ = hb_font_create(face);
  opened->family = familyOf(face);
  const unsigned unitsPerEm = hb_face_get_upem(face);
  const bool isUsable = hb_face_get_glyph_count(face) > 0 && unitsPerEm > 0;
  hb_face_destroy(face);
  if (!isUsable) return nullptr;

  const hb_variation_t weight{HB_OT_TAG_VAR_AXIS_WEIGHT, static_cast<float>(wantedWeight)};
  hb_font_set_variations(opened->shaper_, &weight, 1);
  opened->id = ++lastId;
  opened->unit = 1.0 / unitsPerEm;
  opened->weight = static_cast<int>(std::lround(hb_style_get_value(opened->shaper_, HB_STYLE_TAG_WEIGHT)));
  return opened;
}

bool FontFace::prepare() {
  if (face_) return true;
  library_ = freeType();
  unsigned size = 0;
  const char* const bytes = hb_blob_get_data(blob_, &size);
  if (!library_ ||
      FT_New_Memory_Face(library_.get(), reinterpret_cast<const FT_Byte*>(bytes), static_cast<FT_Long>(size),
                         static_cast<FT_Long>(index_), &face_) != 0) {
    return false;
  }
  unsigned axes = 0;
  const int* const place = hb_font_get_var_coords_normalized(shaper_, &axes);
  if (axes > 0) {
    std::vector<FT_Fixed> coordinates;
    constexpr FT_Fixed finer = 4;  // from 2.14 bits to 16.16
    for (unsigned i = 0; i < axes; ++i) coordinates.push_back(place[i] * finer);
    FT_Set_Var_Blend_Coordinates(face_, axes, coordinates.data());
  }
  readMetrics();
  return true;
}

void FontFace::readMetrics() {
  const auto metric = [this](hb_ot_metrics_tag_t tag, double otherwise) {
    hb_position_t value = 0;
    return hb_ot_metrics_get_position(shaper_, tag, &value) ? value * unit : otherwise;
  };
  ascent = std::clamp(metric(HB_OT_METRICS_TAG_HORIZONTAL_ASCENDER, 0.8), 0.0, 4.0);
  descent = std::clamp(-metric(HB_OT_METRICS_TAG_HORIZONTAL_DESCENDER, -0.2), 0.0, 4.0);
  underlinePosition = std::clamp(-metric(HB_OT_METRICS_TAG_UNDERLINE_OFFSET, -0.1), 0.0, 1.0);
  underlineThickness = std::clamp(metric(HB_OT_METRICS_TAG_UNDERLINE_SIZE, 0.05), 0.0, 0.5);
  hb_codepoint_t space = 0;
  if (hb_font_get_nominal_glyph(shaper_, ' ', &space) != 0) {
    spaceWidth = std::clamp(hb_font_get_glyph_h_advance(shaper_, space) * unit, 0.0, 4.0);
  }
}

void FontFace::releasePages() const {
  if (file_) file_->releasePages();
}

FontFace::~FontFace() {
  if (face_) FT_Done_Face(face_);
  if (shaper_) hb_font_destroy(shaper_);
  if (blob_) hb_blob_destroy(blob_);
}

bool FontFace::has(char32_t character) const {
  hb_codepoint_t glyph = 0;
  return hb_font_get_nominal_glyph(shaper_, character, &glyph) != 0;
}

// Loads a letter without rendering it. Small letters get darker stems. How small a letter is depends on its
// size in points, not on the display, so the outline is loaded in points.
bool FontFace::load(std::uint32_t glyph, double points, double scale) const {
  if (FT_IS_SCALABLE(face_)) {
    const double size = std::min(points, maxFontPixels);
    FT_Matrix matrix{0, 0, 0, 0};
    matrix.xx = matrix.yy = std::lround(std::min(scale, maxFontPixels / size) * 0x10000);
    if (FT_Set_Char_Size(face_, 0, static_cast<FT_F26Dot6>(std::lround(size * 64)), 72, 72) != 0)
      return false;
    FT_Set_Transform(face_, &matrix, nullptr);
  } else if (face_->num_fixed_sizes < 1 || FT_Select_Size(face_, face_->num_fixed_sizes - 1) != 0) {
    return false;
  }
  const FT_Int32 flags = FT_LOAD_NO_HINTING | (FT_HAS_COLOR(face_) ? FT_LOAD_COLOR : FT_LOAD_NO_BITMAP);
  return FT_Load_Glyph(face_, glyph, flags) == 0;
}

double FontFace::overhang(std::uint32_t glyph, double points) const {
  constexpr std::size_t maxKnown = 1000;
  if (!FT_IS_SCALABLE(face_)) return 0;
  const auto known = overhangs_.find({glyph, points});
  if (known != overhangs_.end()) return known->second;
  if (overhangs_.size() >= maxKnown) overhangs_.clear();
  double& found = overhangs_[{glyph, points}];
  if (load(glyph, points, 1)) {
    const auto inPoints = [](FT_Pos length) { return static_cast<double>(length) / 64; };
    const FT_Glyph_Metrics& metrics = face_->glyph->metrics;
    const double end = std::ceil(inPoints(metrics.horiBearingX + metrics.width));
    found = std::clamp(end - std::round(inPoints(face_->glyph->advance.x)), 0.0, 4 * points);
  }
  return found;
}

GlyphPicture FontFace::draw(std::uint32_t glyph, double points, double scale, double shift) const {
  GlyphPicture picture;
  if (!load(glyph, points, scale)) return picture;
  const double pixels = points * scale;
  // A colour font has pictures in few sizes.
  const double available =
      FT_IS_SCALABLE(face_)
          ? pixels
          : static_cast<double>(face_->available_sizes[face_->num_fixed_sizes - 1].y_ppem) / 64;
  FT_GlyphSlot slot = face_->glyph;
  if (slot->format == FT_GLYPH_FORMAT_OUTLINE) {
    FT_BBox box;
    FT_Outline_Get_CBox(&slot->outline, &box);
    constexpr FT_Pos limit =
        static_cast<FT_Pos>(4 * maxFontPixels) * 64;  // a damaged font may have letters of any size
    if (box.xMax - box.xMin > limit || box.yMax - box.yMin > limit) return picture;
    FT_Outline_Translate(&slot->outline, static_cast<FT_Pos>(std::lround(shift * 64)), 0);
  }
  if (slot->format != FT_GLYPH_FORMAT_BITMAP && FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL) != 0)
    return picture;
  const FT_Bitmap& bitmap = slot->bitmap;
  if (bitmap.pixel_mode == FT_PIXEL_MODE_BGRA) return scaledBitmap(pixels, available);
  if (bitmap.pixel_mode != FT_PIXEL_MODE_GRAY) return picture;
  picture = {slot->bitmap_left, -slot->bitmap_top, static_cast<int>(bitmap.width),
             static_cast<int>(bitmap.rows)};
  picture.bytes.reserve(std::size_t{bitmap.width} * bitmap.rows);
  for (unsigned row = 0; row < bitmap.rows; ++row) {
    const unsigned char* const from = bitmap.buffer + static_cast<std::ptrdiff_t>(row) * bitmap.pitch;
    picture.bytes.insert(picture.bytes.end(), from, from + bitmap.width);
  }
  return picture;
}

// Scales the colour picture that FreeType has loaded from its own size to the one wanted.
GlyphPicture FontFace::scaledBitmap(double pixels, double available) const {
  const FT_Bitmap& bitmap = face_->glyph->bitmap;
  PixelImage image{static_cast<int>(bitmap.width), static_cast<int>(bitmap.rows), {}};
  for (unsigned row = 0; row < bitmap.rows; ++row) {
    const unsigned char* from = bitmap.buffer + static_cast<std::ptrdiff_t>(row) * bitmap.pitch;
    for (unsigned column = 0; column < bitmap.width; ++column, from += 4) {
      const unsigned alpha = from[3];
      const auto straight = [alpha](unsigned premultiplied) {
        return static_cast<std::uint8_t>(alpha == 0 ? 0 : std::min(255U, premultiplied * 255 / alpha));
      };
      image.bytes.insert(image.bytes.end(),
                         {straight(from[2]), straight(from[1]), straight(from[0]), from[3]});
    }
  }
  const double share = available > 0 ? pixels / available : 1;
  const auto scaled = [share](double length) { return static_cast<int>(std::lround(length * share)); };
  const int width = std::max(1, scaled(image.width));
  const int height = std::max(1, scaled(image.height));
  PixelImage small = resampled(image, width, height);
  return {scaled(face_->glyph->bitmap_left),
          -scaled(face_->glyph->bitmap_top),
          width,
          height,
          true,
          std::move(small.bytes)};
}

}  // namespace TalvoConsentSDK
