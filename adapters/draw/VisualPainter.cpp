#include "adapters/draw/VisualPainter.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/view/Look.h"

#include "adapters/draw/DrawImage.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

enum Kind : std::uint32_t {
  whiteKind,
  glyphKind,
  cornerKind,
  ringKind,
  symbolKind,
  knobKind,
  knobShadowKind,
  trackKind,
  pictureKind
};

constexpr long symbolSteps = 256;      // directions of a symbol in a turn
constexpr int symbolMargin = 2;        // pixels; a symbol's lines extend beyond its square
constexpr double rounding = 1.0 / 64;  // pixels; lengths that differ by less count as equal
constexpr Color opaqueWhite{1, 1, 1, 1};
constexpr double shadowReach = 3;  // in standard deviations
constexpr int shadowSteps = 12;    // of the grid that draws a shadow's corner

// Lengths in keys are in 1/16 of a pixel.
std::uint32_t sixteenths(double pixels) {
  return static_cast<std::uint32_t>(std::lround(pixels * 16));
}

// The number of places within a pixel where letters may begin. Small letters need more, or gaps between them
// differ.
int glyphSteps(double fontPixels) {
  if (fontPixels < 24) return 4;
  return fontPixels < 40 ? 2 : 1;
}

Color mixed(const Color& from, const Color& to, double share) {
  const auto mix = [share](double a, double b) { return a + (b - a) * share; };
  return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue),
          mix(from.alpha, to.alpha)};
}

Rect sourceOf(const AtlasPlace& place) {
  return {static_cast<double>(place.x), static_cast<double>(place.y), static_cast<double>(place.width),
          static_cast<double>(place.height)};
}

CornerCurve continuousCorner(double radiusPixels, const Rect& box) {
  return {std::max(0.0, std::min({radiusPixels, box.width / 2, box.height / 2})) * look::cornerReach};
}

}  // namespace

// How much of a corner's picture is drawn along each side. Where the corner is longer than half a side, the
// mirrored halves meet in the middle. A middle row or column belongs to the upper or left half.
struct VisualPainter::CornerSides {
  CornerSides(const Rect& box, int whole)
      : left(std::min(whole, (static_cast<int>(box.width) + 1) / 2)),
        top(std::min(whole, (static_cast<int>(box.height) + 1) / 2)),
        right(std::min(whole, static_cast<int>(box.width) / 2)),
        bottom(std::min(whole, static_cast<int>(box.height) / 2)) {}

  double left, top, right, bottom;
};

VisualPainter::VisualPainter(std::shared_ptr<Paragraphs> paragraphs, int maxTextureSize)
    : paragraphs_(std::move(paragraphs)),
      alphas_(TextureFormat::alpha8, std::max(512, maxTextureSize)),
      colors_(TextureFormat::rgba8, std::max(512, maxTextureSize)) {}

const DrawList& VisualPainter::paint(std::span<const VisualLayer> layers, const SurfaceSize& size,
                                     double textScale) {
  size_ = size;
  textScale_ = textScale;
  alphas_.beginList();
  colors_.beginList();
  dropsWhatDoesNotFit_ = false;
  for (bool isPainted = false; !isPainted;) {
    try {
      paintAll(layers);
      isPainted = true;
    } catch (const TextureIsFull& full) {
      dropsWhatDoesNotFit_ = !full.atlas.clear();
    }
  }
  triangles_.finish(alphas_, colors_);
  uploads_.clear();
  released_.clear();
  alphas_.takeUploads(uploads_, released_);
  colors_.takeUploads(uploads_, released_);
  list_ = {list_.revision + 1, triangles_.vertices(), triangles_.indices(), triangles_.commands(), uploads_,
           released_};
  return list_;
}

const DrawList& VisualPainter::repeat() {
  list_.uploads = {};
  list_.released = {};
  return list_;
}

void VisualPainter::releasePixels() {
  alphas_.releasePixels();
  colors_.releasePixels();
}

void VisualPainter::forgetTextures() {
  alphas_.forgetTexture();
  colors_.forgetTexture();
}

void VisualPainter::paintAll(std::span<const VisualLayer> layers) {
  triangles_.clear(size_);
  for (const VisualLayer& layer : layers) {
    for (const Visual& visual : *layer.visuals) {
      opacity_ = visual.opacity * layer.alpha;
      if (opacity_ <= 0) continue;
      std::optional<Rect> clip;
      if (visual.clip) clip = pixels(*visual.clip);
      triangles_.setClip(clip);
      std::visit([&](const auto& content) { draw(visual, content); }, visual.content);
    }
  }
}

// Rounds the edges to whole pixels. What is not empty is at least a pixel wide and high.
Rect VisualPainter::pixels(const Rect& frame) const {
  const double left = std::round(frame.x * size_.scale);
  const double top = std::round(frame.y * size_.scale);
  const auto length = [](double from, double to, bool isEmpty) {
    return isEmpty ? 0 : std::max(1.0, std::round(to) - from);
  };
  return {left, top, length(left, frame.right() * size_.scale, frame.width <= 0),
          length(top, frame.bottom() * size_.scale, frame.height <= 0)};
}

AtlasPlace VisualPainter::added(Atlas& atlas, const AtlasKey& key, const AtlasPlace& place,
                                std::span<const std::uint8_t> bytes) {
  const AtlasPlace* const known = atlas.add(key, place, bytes);
  if (known) return *known;
  if (!dropsWhatDoesNotFit_) throw TextureIsFull{atlas};
  if (!std::exchange(hasReportedDrop_, true))
    print("⚠️ Parts of the banner are missing, because no texture may have more than " +
          std::to_string(atlas.maxSize()) + " x " + std::to_string(atlas.maxSize()) + " pixels");
  return {};
}

template <class Make>
AtlasPlace VisualPainter::shape(const AtlasKey& key, Make make) {
  if (const AtlasPlace* const known = alphas_.find(key)) return *known;
  const ShapePicture picture = make();
  return added(alphas_, key, {0, 0, picture.width, picture.height}, picture.bytes);
}

VisualPainter::DrawnGlyph VisualPainter::glyph(const PlacedGlyph& glyph, double fontPixels, double shift,
                                               std::uint32_t step) {
  const AtlasKey key{glyphKind, glyph.face->id, glyph.glyph, sixteenths(fontPixels),
                     sixteenths(size_.scale) << 4U | step};
  if (const AtlasPlace* const known = alphas_.find(key)) return {TextureFormat::alpha8, *known};
  if (const AtlasPlace* const known = colors_.find(key)) return {TextureFormat::rgba8, *known};
  const GlyphPicture picture = glyph.face->draw(glyph.glyph, fontPixels / size_.scale, size_.scale, shift);
  const AtlasPlace place{0, 0, picture.width, picture.height, picture.left, picture.top};
  if (picture.isColored) return {TextureFormat::rgba8, added(colors_, key, place, picture.bytes)};
  return {TextureFormat::alpha8, added(alphas_, key, place, picture.bytes)};
}

Point VisualPainter::white() {
  constexpr int side = 3;
  const AtlasPlace spot = shape({whiteKind}, [] {
    return ShapePicture{side, side, std::vector<std::uint8_t>(std::size_t{side} * side, 255)};
  });
  return {spot.x + side / 2.0, spot.y + side / 2.0};
}

void VisualPainter::fill(const Rect& area, const Color& color) {
  const Point spot = white();
  triangles_.addRect(TextureFormat::alpha8, area, {spot.x, spot.y, 0, 0}, color);
}

void VisualPainter::drawPicture(const AtlasPlace& picture, double x, double y, const Color& color) {
  triangles_.addRect(TextureFormat::alpha8,
                     {x, y, static_cast<double>(picture.width), static_cast<double>(picture.height)},
                     sourceOf(picture), color);
}

void VisualPainter::draw(const Visual& visual, const visual::Text& text) {
  const auto paragraph = paragraphs_->wrapped(text.text, text.font, textScale_, visual.frame.width);
  const double scale = size_.scale;
  const double fontPixels = paragraph->fontSize() * scale;
  const double linePixels = paragraph->lineHeight() * scale;
  const Rect frame = pixels(visual.frame);
  const double top = visual.clip ? std::max(0.0, visual.clip->y * scale) : 0;
  const double bottom =
      std::min(static_cast<double>(size_.height), visual.clip ? visual.clip->bottom() * scale : size_.height);
  // Letters extend beyond their line by at most its height.
  const double firstSeen =
      std::clamp((top - frame.y) / linePixels - 1, 0.0, static_cast<double>(paragraph->lineCount()));
  const Color color = faded(text.color);
  for (auto i = static_cast<std::size_t>(firstSeen); i < paragraph->lineCount(); ++i) {
    const double lineTop = frame.y + static_cast<double>(i) * linePixels;
    if (lineTop - linePixels > bottom) break;
    const ShapedLine& line = paragraph->line(i);
    const double room = visual.frame.width * scale - line.width * fontPixels;
    double x = frame.x;
    if (text.alignment == visual::TextAlignment::center) x += room / 2;
    if (text.alignment == visual::TextAlignment::right) x += room;
    const double height = std::ceil((line.ascent + line.descent) * paragraph->fontSize() - rounding) * scale;
    const double baseline = lineTop + (linePixels - height) / 2 + line.ascent * fontPixels;
    drawLine(line, fontPixels, x, std::floor(baseline + rounding), color);
    const FontFace* const font = paragraph->text().font();
    if (!text.isUnderlined || !font) continue;
    const double thickness = std::round(std::max(scale, font->underlineThickness * fontPixels));
    const double y = std::round(baseline + font->underlinePosition * fontPixels);
    fill({std::round(x), y, std::round(line.width * fontPixels), std::max(1.0, thickness)}, color);
  }
}

void VisualPainter::drawLine(const ShapedLine& line, double fontPixels, double x, double baseline,
                             const Color& color) {
  const int steps = glyphSteps(fontPixels);
  for (const PlacedGlyph& glyph : line.glyphs) {
    const double origin = std::round((x + glyph.x * fontPixels) * steps) / steps;
    const double whole = std::floor(origin);
    if (whole < -fontPixels * 4 || whole > size_.width + fontPixels * 4) continue;
    const double shift = origin - whole;
    const auto [texture, place] =
        this->glyph(glyph, fontPixels, shift, static_cast<std::uint32_t>(std::lround(shift * steps)));
    const bool isColored = texture == TextureFormat::rgba8;
    triangles_.addRect(texture,
                       {whole + place.left, baseline + std::round(glyph.y * fontPixels) + place.top,
                        static_cast<double>(place.width), static_cast<double>(place.height)},
                       sourceOf(place), isColored ? opaqueWhite.withAlpha(color.alpha) : color);
  }
}

void VisualPainter::draw(const Visual& visual, const visual::Symbol& symbol) {
  const double side = visual.frame.width * size_.scale;
  if (side <= 0) return;
  // Each direction is a picture of its own: some renderers are wrong by a pixel in pictures that are turned.
  const long steps = std::lround(symbol.turns * symbolSteps);
  const auto direction = static_cast<std::uint32_t>((steps % symbolSteps + symbolSteps) % symbolSteps * 2 +
                                                    (symbol.isMirrored ? 1 : 0));
  const AtlasKey key{symbolKind, static_cast<std::uint32_t>(symbol.glyph),
                     static_cast<std::uint32_t>(symbol.weight), sixteenths(side), direction};
  const AtlasPlace picture = shape(key, [&] {
    return symbolPicture(symbol.glyph, symbol.weight, side, symbolMargin,
                         static_cast<double>(steps) / symbolSteps, symbol.isMirrored);
  });
  const double half = picture.width / 2.0;
  drawPicture(picture, std::round(visual.frame.center().x * size_.scale - half),
              std::round(visual.frame.center().y * size_.scale - half), faded(symbol.color));
}

// Draws a corner's picture in all four corners, mirrored where needed.
void VisualPainter::drawCorners(const Rect& box, const CornerSides& sides, const AtlasPlace& corner,
                                const Color& color) {
  for (const bool isRight : {false, true}) {
    for (const bool isBottom : {false, true}) {
      const double width = isRight ? sides.right : sides.left;
      const double height = isBottom ? sides.bottom : sides.top;
      const Rect to{isRight ? box.right() - width : box.x, isBottom ? box.bottom() - height : box.y, width,
                    height};
      const Rect source{corner.x + (isRight ? width : 0), corner.y + (isBottom ? height : 0),
                        isRight ? -width : width, isBottom ? -height : height};
      triangles_.addRect(TextureFormat::alpha8, to, source, color);
    }
  }
}

void VisualPainter::fillBox(const Rect& box, const CornerCurve& curve, const Color& color) {
  const int whole = static_cast<int>(std::ceil(curve.extent));
  if (whole <= 0) return fill(box, color);
  const AtlasPlace corner = shape({cornerKind, sixteenths(curve.extent), curve.isCircular},
                                  [&] { return cornerPicture(curve, whole); });
  const CornerSides sides(box, whole);
  drawCorners(box, sides, corner, color);
  const double across = box.width - sides.left - sides.right;
  fill({box.x + sides.left, box.y, across, sides.top}, color);
  fill({box.x, box.y + sides.top, box.width, box.height - sides.top - sides.bottom}, color);
  fill({box.x + sides.left, box.bottom() - sides.bottom, across, sides.bottom}, color);
}

void VisualPainter::draw(const Visual& visual, const visual::Box& box) {
  const Rect area = pixels(visual.frame);
  if (box.fade != 0) return fillFading(area, box.fade, faded(box.color));
  fillBox(area, continuousCorner(box.cornerRadius * size_.scale, area), faded(box.color));
}

// In rows of pixels, because renderers differ in how they interpolate between a triangle's corners.
void VisualPainter::fillFading(const Rect& area, int fade, const Color& color) {
  for (double y = 0; y < area.height; ++y) {
    const double opacity = look::fadeOpacity(fade, (y + 0.5) / area.height);
    fill({area.x, area.y + y, area.width, 1}, color.withAlpha(color.alpha * opacity));
  }
}

// A grid whose corners have the shadow's opacity there. Between them the renderer interpolates, which differs
// from the blur by less than can be seen.
void VisualPainter::draw(const Visual& visual, const visual::BoxShadow& box) {
  const double deviation = box.shadow.radius * look::shadowDeviation * size_.scale;
  const Rect frame{(visual.frame.x + box.shadow.x) * size_.scale,
                   (visual.frame.y + box.shadow.y) * size_.scale, visual.frame.width * size_.scale,
                   visual.frame.height * size_.scale};
  const CornerCurve curve = continuousCorner(box.cornerRadius * size_.scale, frame);
  const Color color = faded(box.shadow.color);
  if (deviation <= 0) return fillBox(frame, curve, color);
  const double reach = shadowReach * deviation;
  const double inside = std::min({curve.extent + reach, frame.width / 2, frame.height / 2});
  const double step = (reach + inside) / shadowSteps;
  const std::vector<double>& corner = shadowCorner(curve, deviation, step);
  std::vector<double> x, y;
  for (int i = 0; i <= shadowSteps; ++i) x.push_back(frame.x - reach + i * step);
  for (int i = 0; i <= shadowSteps; ++i) y.push_back(frame.y - reach + i * step);
  for (int i = shadowSteps; i >= 0; --i) x.push_back(frame.right() + reach - i * step);
  for (int i = shadowSteps; i >= 0; --i) y.push_back(frame.bottom() + reach - i * step);
  std::vector<Color> colors;
  constexpr std::size_t count = shadowSteps + 1;
  for (std::size_t row = 0; row < 2 * count; ++row) {
    for (std::size_t column = 0; column < 2 * count; ++column) {
      const std::size_t place =
          std::min(row, 2 * count - 1 - row) * count + std::min(column, 2 * count - 1 - column);
      colors.push_back(color.withAlpha(color.alpha * corner[place]));
    }
  }
  triangles_.addGrid(x, y, colors, white());
}

const std::vector<double>& VisualPainter::shadowCorner(const CornerCurve& curve, double deviation,
                                                       double step) {
  constexpr std::size_t maxShadows = 32;
  if (shadows_.size() >= maxShadows) shadows_.clear();
  std::vector<double>& opacities = shadows_[{curve.extent, deviation, step}];
  if (!opacities.empty()) return opacities;
  std::vector<double> places;
  for (int i = 0; i <= shadowSteps; ++i) places.push_back(i * step - shadowReach * deviation);
  for (const double y : places) {
    std::vector<double> row = shadowOpacities(curve, deviation, places, y);
    row.front() = 0;  // at the outermost edge nothing, so that the edge cannot be seen
    opacities.insert(opacities.end(), row.begin(), row.end());
  }
  std::fill_n(opacities.begin(), places.size(), 0);
  return opacities;
}

void VisualPainter::draw(const Visual& visual, const visual::Picture& picture) {
  const auto* const image = dynamic_cast<const DrawImage*>(picture.image.get());
  const Rect area = pixels(visual.frame);
  if (!image || area.width <= 0 || area.height <= 0) return;
  // Larger pictures than the texture can hold are enlarged by the renderer.
  const double share = std::min(1.0, (colors_.maxSize() - 2) / std::max(area.width, area.height));
  const int width = std::max(1, static_cast<int>(area.width * share));
  const int height = std::max(1, static_cast<int>(area.height * share));
  const AtlasKey key{pictureKind, image->id(), static_cast<std::uint32_t>(width),
                     static_cast<std::uint32_t>(height)};
  const AtlasPlace* known = colors_.find(key);
  const AtlasPlace place =
      known ? *known
            : added(colors_, key, {0, 0, width, height}, resampled(image->pixels(), width, height).bytes);
  triangles_.addRect(TextureFormat::rgba8, area, sourceOf(place), faded(opaqueWhite));
}

// What lies one above the other is cut out below, so that a translucent switch looks like a translucent
// picture of an opaque one.
void VisualPainter::draw(const Visual& visual, const visual::Switch& toggle) {
  const Rect track = pixels(visual.frame);
  const look::SwitchParts parts = look::switchParts(track.size());
  const double inset = std::round(parts.inset);
  const double diameter = std::max(1.0, track.height - 2 * inset);
  const double position = toggle.isMirrored ? 1 - toggle.position : toggle.position;
  const double left = std::round(inset + parts.travel * position);
  const Color color = faded(mixed(toggle.offColor, toggle.onColor, toggle.position));
  if (opacity_ < 1) {
    const int width = static_cast<int>(track.width);
    const int height = static_cast<int>(track.height);
    const AtlasKey key{trackKind, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                       static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(inset)};
    drawPicture(shape(key, [&] { return trackPicture(width, height, left, inset, diameter); }), track.x,
                track.y, color);
  } else {
    fillBox(track, {track.height / 2, true}, color);
  }
  const int margin = static_cast<int>(std::ceil(2 * parts.unit));
  const double x = track.x + left - margin;
  const double y = track.y + inset - margin;
  drawPicture(shape({knobShadowKind, sixteenths(diameter), sixteenths(parts.unit)},
                    [&] { return knobShadowPicture(diameter, margin, parts.unit); }),
              x, y, faded(Color::black()));
  drawPicture(shape({knobKind, sixteenths(diameter), static_cast<std::uint32_t>(margin)},
                    [&] { return knobPicture(diameter, margin); }),
              x, y, faded(toggle.knobColor));
}

void VisualPainter::strokeBox(const Rect& box, double radius, double stroke, const Color& color) {
  if (color.alpha <= 0 || box.width < 2 * stroke || box.height < 2 * stroke) return;
  const CornerCurve outer = continuousCorner(radius, box);
  const CornerCurve inner = continuousCorner(radius - stroke, box.grownBy(-stroke));
  const int whole = static_cast<int>(std::ceil(std::max(outer.extent, inner.extent + stroke)));
  const AtlasPlace corner =
      shape({ringKind, sixteenths(outer.extent), sixteenths(inner.extent), sixteenths(stroke)},
            [&] { return ringCornerPicture(outer, inner, stroke, whole); });
  const CornerSides sides(box, whole);
  drawCorners(box, sides, corner, color);
  const double across = box.width - sides.left - sides.right;
  const double down = box.height - sides.top - sides.bottom;
  fill({box.x + sides.left, box.y, across, stroke}, color);
  fill({box.x + sides.left, box.bottom() - stroke, across, stroke}, color);
  fill({box.x, box.y + sides.top, stroke, down}, color);
  fill({box.right() - stroke, box.y + sides.top, stroke, down}, color);
}

void VisualPainter::draw(const Visual& visual, const visual::FocusRing& ring) {
  const double stroke = std::max(1.0, std::round(look::ringStroke * size_.scale));
  const Rect box = pixels(visual.frame);
  const double radius = ring.cornerRadius * size_.scale;
  strokeBox(box, radius, stroke, faded(ring.outer));
  strokeBox(box.grownBy(-stroke), radius - stroke, stroke, faded(ring.inner));
}

}  // namespace TalvoConsentSDK
