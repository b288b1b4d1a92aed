#pragma once

// One font in one weight: which letters it has, how HarfBuzz shapes them, and how FreeType draws them.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adapters/draw/FontFile.h"
#include "adapters/draw/SurfaceOptions.h"

struct hb_font_t;
struct hb_blob_t;
struct FT_FaceRec_;
struct FT_LibraryRec_;

namespace TalvoConsentSDK {

/// A drawn letter. `left` and `top` say where its first pixel is, seen from the letter's origin; y grows
/// downwards.
struct GlyphPicture {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  bool isColored = false;             // four bytes a pixel, not premultiplied; otherwise one, the opacity
  std::vector<std::uint8_t> bytes{};  // row by row
};

/// Main thread only. A damaged font at worst draws nothing or the wrong thing.
class FontFace {
 public:
  /// Opens the fonts in a file: one for each member of a collection, and for a variable font one for each
  /// weight. Returns an empty list if the file is not a font.
  static std::vector<std::unique_ptr<FontFace>> open(const FontSource& source);

  ~FontFace();
  FontFace(const FontFace&) = delete;
  FontFace& operator=(const FontFace&) = delete;

  bool has(char32_t character) const;

  /// Prepares the font for drawing at the first call, because that takes time and memory. Returns false if
  /// the font is damaged. Call it before `draw` and `overhang`, and before reading lengths.
  bool prepare();

  /// Draws a letter at a size in points, with `scale` pixels in a point, its origin moved to the right by
  /// `shift` pixels.
  GlyphPicture draw(std::uint32_t glyph, double points, double scale, double shift) const;

  /// How far a letter reaches beyond its width, in whole points.
  double overhang(std::uint32_t glyph, double points) const;

  /// Releases the pages of its file, see FontFile.
  void releasePages() const;

  hb_font_t* shaper() const { return shaper_; }

  std::uint32_t id = 0;  // unique in the process
  std::string path;      // of its file; may be empty
  std::string family;
  int weight = 400;  // from 1 to 1000

  /// Whether it is the font for a script (see view/Look.h). It then also draws the blanks, digits and
  /// punctuation between the letters of this script.
  bool isForScript = false;

  // In ems; y grows downwards, so that the underline's distance from the baseline is positive.
  double unit = 0;  // of the shaper's lengths
  double ascent = 0;
  double descent = 0;
  double underlinePosition = 0;  // of its upper edge
  double underlineThickness = 0;
  double spaceWidth = 0;

 private:
  FontFace() = default;
  static std::unique_ptr<FontFace> open(hb_blob_t* blob, unsigned index, int wantedWeight);
  void readMetrics();
  bool load(std::uint32_t glyph, double points, double scale) const;
  GlyphPicture scaledBitmap(double pixels, double available) const;

  std::shared_ptr<FontFile> file_;  // null for bytes in memory
  hb_blob_t* blob_ = nullptr;
  hb_font_t* shaper_ = nullptr;
  unsigned index_ = 0;  // in a collection
  FT_FaceRec_* face_ = nullptr;
  std::shared_ptr<FT_LibraryRec_> library_;
  mutable std::map<std::pair<std::uint32_t, double>, double> overhangs_;
};

}  // namespace TalvoConsentSDK
