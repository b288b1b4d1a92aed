#pragma once

// A laid-out tree as a flat list of what to draw. A window either paints the entries in order, or keeps one
// item per identity and updates only the items that differ from the last list.

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

/// Text wrapped to the frame's width.
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
  double turns = 0;  // clockwise, or counterclockwise if mirrored
  bool isMirrored = false;
  friend bool operator==(const Symbol&, const Symbol&) = default;
};

/// A filled rectangle with continuous corners.
struct Box {
  Color color;
  double cornerRadius = 0;
  int fade = 0;  // 1: the colour is clear at the bottom, -1: at the top; changes smoothly from edge to edge
  friend bool operator==(const Box&, const Box&) = default;
};

/// The shadow of a box with the same frame. The shadow extends beyond the frame.
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

/// An outline of two strokes of 2 points each around the focused control. In high contrast, also used for
/// the outline of a switch or a background; the inner stroke is then clear.
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
  int part = 0;  // distinguishes the visuals of one element; the pair of element and part is unique in a list
  Rect frame;
  std::optional<Rect> clip;
  double opacity = 1;
  visual::Content content;
  friend bool operator==(const Visual&, const Visual&) = default;
};

/// What the visuals depend on besides the tree.
struct VisualState {
  std::optional<ElementId> pressed;
  std::optional<ElementId> ringed;  // the element with the focus ring
  std::vector<ScrollRegion> scrollRegions;
};

/// Flattens a laid-out tree in painting order. Omits what is outside its clip or outside the window, except
/// shadows, which extend beyond their frames. Moving parts are drawn as they are at the current time of
/// `animations`.
TALVO_EXPORT std::vector<Visual> visuals(ElementTree& tree, const ViewEnvironment& environment,
                                         const VisualState& state, Animations& animations);

}  // namespace view
}  // namespace TalvoConsentSDK
