#pragma once

// What a view is made of: plain data that can be compared, printed, laid out and drawn. It is immutable and
// independent of any toolkit.

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

/// Code in a view. Handlers are never compared: two views that differ only in their handlers are equal. The
/// handlers of the newest view are the ones that run.
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

/// A symbol in a square of `size` points, which grows with the text.
struct Symbol {
  Glyph glyph = Glyph::xmark;
  double size = 0;
  FontWeight weight = FontWeight::regular;
  Color color = {};
  double turns = 0;  // clockwise, or counterclockwise if the layout is right to left; a change is animated
  friend bool operator==(const Symbol&, const Symbol&) = default;
};

/// A picture from the network in a frame that is `height` points high. It keeps its proportions if it is too
/// wide for the frame. It is empty while it loads and if loading fails.
struct AsyncImage {
  URL url;
  double height = 0;
  friend bool operator==(const AsyncImage&, const AsyncImage&) = default;
};

/// A filled area that takes all the room it is offered. Touches on it do not reach the host.
struct Shape {
  Color color = {};
  friend bool operator==(const Shape&, const Shape&) = default;
};

/// A button. Its child is the label.
struct Button {
  Handler<void()> action = {};
  friend bool operator==(const Button&, const Button&) = default;
};

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

/// A thin line across a vertical stack.
struct Divider {
  Color color = {};
  friend bool operator==(const Divider&, const Divider&) = default;
};

/// Scrolls its child vertically if it is offered less than the child's height.
struct Scroll {
  friend bool operator==(const Scroll&, const Scroll&) = default;
};

/// Five children: a bar and a title on one line, or the title below the bar if it would need several lines
/// otherwise; the content below them; and links above a footer. If they do not fit, the content scrolls and
/// the others stay. A title that is not beside the bar scrolls, too, if the two take more than a third of the
/// height. The links scroll if less than two fifths of the height would be left for what scrolls, or less
/// than `minMiddle` points times the text scale. The title scrolls if less than `minMiddle` points would be
/// left then, or, with large text, less than a third of the height. If that does not leave as much, the
/// footer scrolls in place of the title, or else both do. The bar always stays.
struct PinnedEnds {
  double minMiddle = 120;
  double overlap = 12;   // how far content scrolls under the title's bottom padding
  double gap = 8;        // between scrolling content and a footer that stays
  double closeRoom = 0;  // width at the trailing end of the first line that the title leaves free
  bool growsUp = false;  // whether the bottom edge stays in place when the height changes
  friend bool operator==(const PinnedEnds&, const PinnedEnds&) = default;
};

/// Shows its child if it is open. When it opens or closes, its height changes over time, and the child is cut
/// off at the bottom. While it opens, the list around it scrolls as far as the start of the child needs to be
/// seen.
struct Disclosure {
  bool isOpen = false;
  friend bool operator==(const Disclosure&, const Disclosure&) = default;
};

/// A vertical stack whose rows are created when they come near the visible part.
struct LazyRows {
  std::size_t count = 0;
  Handler<AnyView(std::size_t)> row = {};
  friend bool operator==(const LazyRows&, const LazyRows&) = default;
};

struct Padding {
  Insets insets = {};
  friend bool operator==(const Padding&, const Padding&) = default;
};

/// A frame around a child. The child keeps its own size and is aligned within the frame. In each dimension, a
/// frame with a maximum takes the offered length, but at least the minimum and at most the maximum; if these
/// two are equal, the length is fixed. If no length is offered, the frame takes the child's length instead,
/// within the same limits. If there is no minimum, the child's length, but at most the maximum, serves as the
/// minimum. A frame without a maximum is as long as its child, but at least the minimum.
struct Frame {
  std::optional<double> minWidth = {};
  std::optional<double> maxWidth = {};
  std::optional<double> minHeight = {};
  std::optional<double> maxHeight = {};
  Alignment alignment = {};
  friend bool operator==(const Frame&, const Frame&) = default;
};

/// A filled rectangle with continuous (smooth) corners behind its child. Touches on it do not reach the host.
struct Background {
  Color color = {};
  double cornerRadius = 0;
  std::optional<Shadow> shadow = {};
  std::optional<Color> outline = {};  // drawn only in high contrast
  friend bool operator==(const Background&, const Background&) = default;
};

/// Draws the second child over the first, aligned within the first child's frame.
struct Overlay {
  Alignment alignment = {};
  friend bool operator==(const Overlay&, const Overlay&) = default;
};

/// Disables the controls inside and draws them as disabled.
struct Disabled {
  bool isDisabled = true;
  friend bool operator==(const Disabled&, const Disabled&) = default;
};

/// Lets its child cover the whole window, including the safe areas.
struct IgnoresSafeArea {
  friend bool operator==(const IgnoresSafeArea&, const IgnoresSafeArea&) = default;
};

/// What assistive technology receives instead of, or in addition to, what the child shows.
struct Accessibility {
  Role role = Role::none;  // none leaves the child's own role
  std::string label = {};  // empty leaves the child's own texts
  std::string value = {};
  std::string description = {};
  std::string language = {};  // of all names inside, such as "de-AT"; empty leaves that of the surroundings
  bool isModal = false;       // for a dialog: the user cannot reach what is below
  bool isDismissal = false;   // for a button: the Escape key activates it
  int focusRequests = 0;      // each time that this grows, the last element inside gets the focus
  friend bool operator==(const Accessibility&, const Accessibility&) = default;
};

/// A view with its own state. Its body runs for every rendering.
struct Component {
  std::string name = {};
  Handler<AnyView(RenderContext&)> body = {};
  friend bool operator==(const Component&, const Component&) = default;
};

using Content = std::variant<Empty, Text, Symbol, AsyncImage, Shape, Button, Toggle, Stack, Divider, Scroll,
                             PinnedEnds, Disclosure, LazyRows, Padding, Frame, Background, Overlay, Disabled,
                             IgnoresSafeArea, Accessibility, Component>;

/// Restricts a visitor's case to the listed kinds. A visitor that lacks a case for some kind does not
/// compile.
template <class T, class... Kinds>
concept OneOf = (std::same_as<T, Kinds> || ...);

}  // namespace node

struct ViewNode {
  node::Content content;
  std::vector<AnyView> children;
  std::string key;  // identity among its siblings; if empty, the position is the identity
};

}  // namespace view
}  // namespace TalvoConsentSDK
