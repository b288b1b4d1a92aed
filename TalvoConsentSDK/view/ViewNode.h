#pragma once

// What a view is made of: plain data that can be compared, printed, laid out and drawn. Nothing here knows a
// toolkit, and nothing here changes once it is made.

#include <concepts>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

class RenderContext;

/// Code in a view: called, but never compared. Two views that differ only in their handlers are equal, and
/// the newest one's handlers are those that run.
template <class Signature>
struct Handler {
  std::function<Signature> run;
  friend bool operator==(const Handler&, const Handler&) { return true; }
};

namespace node {

struct Empty {
  friend bool operator==(const Empty&, const Empty&) = default;
};

struct Text {
  std::string text = {};
  Font font = {};
  Color color = {};
  bool isUnderlined = false;
  HorizontalAlignment alignment = HorizontalAlignment::leading;
  friend bool operator==(const Text&, const Text&) = default;
};

/// A symbol in a square of `size` points.
struct Symbol {
  Glyph glyph = Glyph::xmark;
  double size = 0;
  FontWeight weight = FontWeight::regular;
  Color color = {};
  double turns = 0;  // clockwise; a change is animated
  friend bool operator==(const Symbol&, const Symbol&) = default;
};

/// A picture from the network, `height` points high: clear until it is there and when it cannot be had.
struct AsyncImage {
  URL url;
  double height = 0;
  friend bool operator==(const AsyncImage&, const AsyncImage&) = default;
};

/// A filled area that takes all the room it is offered; it keeps touches from what lies below.
struct Shape {
  Color color = {};
  friend bool operator==(const Shape&, const Shape&) = default;
};

/// Its child is the label.
struct Button {
  Handler<void()> action = {};
  friend bool operator==(const Button&, const Button&) = default;
};

/// A switch.
struct Toggle {
  bool isOn = false;
  Handler<void(bool)> set = {};
  Color onColor = {};
  Color offColor = {};
  Color knobColor = {};
  friend bool operator==(const Toggle&, const Toggle&) = default;
};

enum class Axis { horizontal, vertical, depth };

struct Stack {
  Axis axis = Axis::vertical;
  Alignment alignment = {};
  double spacing = 0;
  Overflow overflow = Overflow::compress;
  friend bool operator==(const Stack&, const Stack&) = default;
};

/// Flexible room in a stack.
struct Spacer {
  friend bool operator==(const Spacer&, const Spacer&) = default;
};

/// A thin line across a vertical stack.
struct Divider {
  Color color = {};
  friend bool operator==(const Divider&, const Divider&) = default;
};

/// Scrolls its child vertically when it is offered less than the child's height.
struct Scroll {
  friend bool operator==(const Scroll&, const Scroll&) = default;
};

/// Two children, the second below the first. Where they do not fit, the first scrolls and the second stays;
/// where that would leave the first less than `minMiddle` (at text scale 1, and more for larger text), both
/// scroll together. Where it scrolls, `gap` keeps the first from the second, and `inset` from what is drawn
/// over the top of it.
struct PinnedFooter {
  double inset = 0;
  double minMiddle = 120;
  double gap = 8;
  friend bool operator==(const PinnedFooter&, const PinnedFooter&) = default;
};

/// A vertical stack whose rows are made when they come near the visible part.
struct LazyRows {
  std::size_t count = 0;
  Handler<AnyView(std::size_t)> row = {};
  friend bool operator==(const LazyRows&, const LazyRows&) = default;
};

struct Padding {
  Insets insets = {};
  friend bool operator==(const Padding&, const Padding&) = default;
};

/// A size of its own: fixed where minimum equals maximum, else what is offered within the two. An absent
/// bound is the child's own size. The child keeps its size and is aligned within.
struct Frame {
  std::optional<double> minWidth = {};
  std::optional<double> maxWidth = {};
  std::optional<double> minHeight = {};
  std::optional<double> maxHeight = {};
  Alignment alignment = {};
  friend bool operator==(const Frame&, const Frame&) = default;
};

/// A filled rectangle behind its child, with continuous (smooth) corners; it keeps touches from what lies
/// below.
struct Background {
  Color color = {};
  double cornerRadius = 0;
  std::optional<Shadow> shadow = {};
  std::optional<Color> outline = {};  // drawn where high contrast is asked for
  friend bool operator==(const Background&, const Background&) = default;
};

/// A second child drawn over the first, in its frame, aligned.
struct Overlay {
  Alignment alignment = {};
  friend bool operator==(const Overlay&, const Overlay&) = default;
};

struct Opacity {
  double opacity = 1;
  friend bool operator==(const Opacity&, const Opacity&) = default;
};

/// Controls inside are drawn as disabled and cannot be used.
struct Disabled {
  bool isDisabled = true;
  friend bool operator==(const Disabled&, const Disabled&) = default;
};

/// Its child covers the whole window, safe areas included.
struct IgnoresSafeArea {
  friend bool operator==(const IgnoresSafeArea&, const IgnoresSafeArea&) = default;
};

/// What assistive technology is told instead of, or in addition to, what the child shows.
struct Accessibility {
  Role role = Role::none;  // none: the child's own
  std::string label = {};  // empty: the child's own texts
  std::string value = {};
  std::string description = {};
  bool isModal = false;      // (dialog) what lies below cannot be reached
  bool isDismissal = false;  // (button) what the Escape key does
  friend bool operator==(const Accessibility&, const Accessibility&) = default;
};

/// A view with state of its own: its body is made anew for every rendering.
struct Component {
  std::string name = {};
  Handler<AnyView(RenderContext&)> body = {};
  friend bool operator==(const Component&, const Component&) = default;
};

using Content = std::variant<Empty, Text, Symbol, AsyncImage, Shape, Button, Toggle, Stack, Spacer, Divider,
                             Scroll, PinnedFooter, LazyRows, Padding, Frame, Background, Overlay, Opacity,
                             Disabled, IgnoresSafeArea, Accessibility, Component>;

/// For a case that serves several kinds: naming them keeps every visitor exhaustive.
template <class T, class... Kinds>
concept OneOf = (std::same_as<T, Kinds> || ...);

}  // namespace node

/// One node of a view's tree.
struct ViewNode {
  node::Content content;
  std::vector<AnyView> children;
  std::string key;  // identity among its siblings; empty: its position
};

}  // namespace view
}  // namespace TalvoConsentSDK
