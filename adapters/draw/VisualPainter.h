#pragma once

// Turns visuals into draw lists.

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <vector>

#include "TalvoConsentSDK/view/Visual.h"

#include "adapters/draw/Atlas.h"
#include "adapters/draw/Paragraph.h"
#include "adapters/draw/Shapes.h"
#include "adapters/draw/TriangleList.h"

namespace TalvoConsentSDK {

/// The visuals of one window, and the window's opacity.
struct VisualLayer {
  const std::vector<view::Visual>* visuals = nullptr;
  double alpha = 1;
};

/// Main thread only.
class VisualPainter {
 public:
  VisualPainter(std::shared_ptr<Paragraphs> paragraphs, int maxTextureSize);

  /// Returns the list that draws the layers in order. Valid until the next call.
  const DrawList& paint(std::span<const VisualLayer> layers, const SurfaceSize& size, double textScale);

  /// Returns the last list again, without its uploads.
  const DrawList& repeat();

  /// Frees the memory to which the uploads of the last list from `paint` point.
  void releasePixels();

  void forgetTextures();

 private:
  // Ends the list because a texture is full.
  struct TextureIsFull {
    Atlas& atlas;
  };

  void paintAll(std::span<const VisualLayer> layers);
  void draw(const view::Visual& visual, const view::visual::Text& text);
  void draw(const view::Visual& visual, const view::visual::Symbol& symbol);
  void draw(const view::Visual& visual, const view::visual::Box& box);
  void draw(const view::Visual& visual, const view::visual::BoxShadow& shadow);
  void draw(const view::Visual& visual, const view::visual::Picture& picture);
  void draw(const view::Visual& visual, const view::visual::Switch& toggle);
  void draw(const view::Visual& visual, const view::visual::FocusRing& ring);

  void drawLine(const ShapedLine& line, double fontPixels, double x, double baseline,
                const platform::Color& color);
  void fill(const platform::Rect& pixels, const platform::Color& color);
  struct CornerSides;
  void drawCorners(const platform::Rect& box, const CornerSides& sides, const AtlasPlace& corner,
                   const platform::Color& color);
  void fillBox(const platform::Rect& pixels, const CornerCurve& curve, const platform::Color& color);
  void fillFading(const platform::Rect& area, int fade, const platform::Color& color);
  void strokeBox(const platform::Rect& pixels, double cornerRadius, double stroke,
                 const platform::Color& color);
  void drawPicture(const AtlasPlace& place, double x, double y, const platform::Color& color);

  struct DrawnGlyph {
    TextureFormat texture = TextureFormat::alpha8;
    AtlasPlace place;
  };

  DrawnGlyph glyph(const PlacedGlyph& glyph, double fontPixels, double shift, std::uint32_t step);
  AtlasPlace added(Atlas& atlas, const AtlasKey& key, const AtlasPlace& place,
                   std::span<const std::uint8_t> bytes);
  template <class Make>
  AtlasPlace shape(const AtlasKey& key, Make make);
  platform::Point white();
  platform::Rect pixels(const platform::Rect& frame) const;
  platform::Color faded(const platform::Color& color) const {
    return color.withAlpha(color.alpha * opacity_);
  }
  const std::vector<double>& shadowCorner(const CornerCurve& curve, double deviation, double step);

  const std::shared_ptr<Paragraphs> paragraphs_;
  Atlas alphas_;
  Atlas colors_;
  TriangleList triangles_;
  SurfaceSize size_;
  double textScale_ = 1;
  double opacity_ = 1;
  bool dropsWhatDoesNotFit_ = false;
  bool hasReportedDrop_ = false;
  std::map<std::vector<double>, std::vector<double>> shadows_;
  std::vector<TextureUpload> uploads_;
  std::vector<TextureId> released_;
  DrawList list_;
};

}  // namespace TalvoConsentSDK
