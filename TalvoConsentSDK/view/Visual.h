#pragma once

// A laid-out tree as the flat list of what is drawn. A window shows it by painting each entry in turn, or
// keeps one item per identity and touches only those that differ from the last list.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/view/Animations.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/Layout.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

namespace visual {

enum class TextAlignment { left, center, right };

/// Text wrapped in the frame's width.
struct Text {
  std::string text;
  Font font;
  Color color;
  bool isUnderlined = false;
  TextAlignment alignment = TextAlignment::left;
  friend bool operator==(const Text&, const Text&) = default;
};

struct Symbol {
  Glyph glyph = Glyph::xmark;
  FontWeight weight = FontWeight::regular;
  Color color;
  double turns = 0;  // clockwise
  bool isMirrored = false;
  friend bool operator==(const Symbol&, const Symbol&) = default;
};

/// A filled rectangle with continuous corners.
struct Box {
  Color color;
  double cornerRadius = 0;
  friend bool operator==(const Box&, const Box&) = default;
};

/// The shadow of a box with the same frame; it reaches beyond the frame.
struct BoxShadow {
  Shadow shadow;
  double cornerRadius = 0;
  friend bool operator==(const BoxShadow&, const BoxShadow&) = default;
};

struct Picture {
  std::shared_ptr<const Image> image;
  friend bool operator==(const Picture&, const Picture&) = default;
};

struct Switch {
  Color onColor;
  Color offColor;
  Color knobColor;
  double position = 0;  // of the knob, from 0 (off) to 1 (on)
  bool isMirrored = false;
  friend bool operator==(const Switch&, const Switch&) = default;
};

/// An outline of two strokes of 2 points: around the control that keys act on, and, with the outer one alone,
/// around controls where high contrast is asked for.
struct FocusRing {
  Color inner;
  Color outer;
  double cornerRadius = 0;
  friend bool operator==(const FocusRing&, const FocusRing&) = default;
};

using Content = std::variant<Text, Symbol, Box, BoxShadow, Picture, Switch, FocusRing>;

}  // namespace visual

/// One thing to draw. Frames are in window coordinates, in points.
struct Visual {
  ElementId element = 0;
  int part = 0;  // distinguishes what one element draws; the pair is unique in a list
  Rect frame;
  std::optional<Rect> clip;
  double opacity = 1;
  visual::Content content;
  friend bool operator==(const Visual&, const Visual&) = default;
};

/// What a list of visuals depends on besides the tree.
struct VisualState {
  std::optional<ElementId> pressed;
  std::optional<ElementId> ringed;  // has the focus ring
  std::vector<ScrollRegion> scrollRegions;
};

/// Flattens a laid-out tree, in the order of painting. What lies outside its clip or the window is left out.
/// Moving parts are drawn as they are at the animations' present time.
TALVO_EXPORT std::vector<Visual> visuals(ElementTree& tree, const ViewEnvironment& environment,
                                         const VisualState& state, Animations& animations);

}  // namespace view
}  // namespace TalvoConsentSDK
