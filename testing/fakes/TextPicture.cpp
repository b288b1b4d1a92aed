#include "testing/fakes/TextPicture.h"

#include <array>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <optional>

#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

std::string number(double value) {
  if (!std::isfinite(value)) return "infinity";
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  return {digits.data(), end};
}

std::string hex(const Color& color) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text = "#";
  for (const double channel : {color.red, color.green, color.blue, color.alpha}) {
    const auto byte = static_cast<unsigned>(std::lround(channel * 255));
    text += digits[byte >> 4 & 15];
    text += digits[byte & 15];
  }
  return text;
}

std::string name(TextStyle style) {
  switch (style) {
    case TextStyle::headline:
      return "headline";
    case TextStyle::body:
      return "body";
    case TextStyle::subheadline:
      return "subheadline";
    case TextStyle::footnote:
      return "footnote";
  }
  return "";
}

std::string name(FontWeight weight) {
  switch (weight) {
    case FontWeight::regular:
      return "regular";
    case FontWeight::medium:
      return "medium";
    case FontWeight::semibold:
      return "semibold";
    case FontWeight::bold:
      return "bold";
  }
  return "";
}

std::string name(Glyph glyph) {
  switch (glyph) {
    case Glyph::xmark:
      return "xmark";
    case Glyph::chevronLeft:
      return "chevron.left";
    case Glyph::chevronRight:
      return "chevron.right";
  }
  return "";
}

std::string name(HorizontalAlignment alignment) {
  switch (alignment) {
    case HorizontalAlignment::leading:
      return "leading";
    case HorizontalAlignment::center:
      return "center";
    case HorizontalAlignment::trailing:
      return "trailing";
  }
  return "";
}

std::string name(VerticalAlignment alignment) {
  switch (alignment) {
    case VerticalAlignment::top:
      return "top";
    case VerticalAlignment::center:
      return "center";
    case VerticalAlignment::bottom:
      return "bottom";
  }
  return "";
}

std::string name(Alignment alignment) {
  return name(alignment.vertical) + " " + name(alignment.horizontal);
}

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

std::string optionally(const char* label, const std::string& text) {
  return text.empty() ? "" : std::string(" ") + label + " " + quoted(text);
}

std::string bound(const char* label, std::optional<double> value) {
  return value ? std::string(" ") + label + " " + number(*value) : "";
}

std::string stackLine(const node::Stack& stack) {
  std::string line;
  switch (stack.axis) {
    case node::Axis::horizontal:
      line = "horizontal " + name(stack.alignment.vertical);
      break;
    case node::Axis::vertical:
      line = "vertical " + name(stack.alignment.horizontal);
      break;
    case node::Axis::depth:
      return "depth " + name(stack.alignment);
  }
  if (stack.spacing != 0) line += " spacing " + number(stack.spacing);
  switch (stack.overflow) {
    case Overflow::compress:
      break;
    case Overflow::stackAtBrokenWord:
      line += " stacking";
      break;
    case Overflow::wrap:
      line += " wrapping";
      break;
  }
  return line;
}

// The text of a view that gets its own line; nothing for a wrapper, which is appended to the line of the view
// that it wraps.
struct OwnLine {
  std::optional<std::string> operator()(const node::Empty&) const { return "empty"; }
  std::optional<std::string> operator()(const node::Text& text) const {
    std::string line = "text " + quoted(text.text) + " " + name(text.font.style) + " " +
                       name(text.font.weight) + " " + hex(text.color);
    if (text.isUnderlined) line += " underlined";
    if (text.alignment != HorizontalAlignment::leading) line += " " + name(text.alignment);
    return line;
  }
  std::optional<std::string> operator()(const node::Symbol& symbol) const {
    std::string line = "symbol " + name(symbol.glyph) + " " + number(symbol.size) + " " +
                       name(symbol.weight) + " " + hex(symbol.color);
    return symbol.turns == 0 ? line : line + " turned " + number(symbol.turns);
  }
  std::optional<std::string> operator()(const node::AsyncImage& image) const {
    return "image " + image.url.text() + " height " + number(image.height);
  }
  std::optional<std::string> operator()(const node::Shape& shape) const {
    return "shape " + hex(shape.color);
  }
  std::optional<std::string> operator()(const node::Button&) const { return "button"; }
  std::optional<std::string> operator()(const node::Toggle& toggle) const {
    return std::string("switch ") + (toggle.isOn ? "on" : "off");
  }
  std::optional<std::string> operator()(const node::Stack& stack) const { return stackLine(stack); }
  std::optional<std::string> operator()(const node::Divider& line) const {
    return "divider " + hex(line.color);
  }
  std::optional<std::string> operator()(const node::Scroll&) const { return "scroll"; }
  std::optional<std::string> operator()(const node::PinnedEnds& pinned) const {
    return pinned.growsUp ? "pinned ends growing up" : "pinned ends";
  }
  std::optional<std::string> operator()(const node::Disclosure& disclosure) const {
    return disclosure.isOpen ? "open" : "closed";
  }
  std::optional<std::string> operator()(const node::LazyRows& rows) const {
    return "rows " + std::to_string(rows.count);
  }
  std::optional<std::string> operator()(const node::Component& component) const { return component.name; }
  template <node::OneOf<node::Padding, node::Frame, node::Background, node::Overlay, node::Disabled,
                        node::IgnoresSafeArea, node::Accessibility>
                Wrapper>
  std::optional<std::string> operator()(const Wrapper&) const {
    return std::nullopt;
  }
};

struct WrapperText {
  std::string operator()(const node::Padding& padding) const {
    const Insets& i = padding.insets;
    if (i == Insets::all(i.top)) return "padding " + number(i.top);
    return "padding " + number(i.top) + " " + number(i.leading) + " " + number(i.bottom) + " " +
           number(i.trailing);
  }
  std::string operator()(const node::Frame& frame) const {
    std::string text = "frame";
    const auto side = [&](const char* fixed, const char* least, const char* most, auto minimum,
                          auto maximum) {
      if (minimum && minimum == maximum) {
        text += bound(fixed, minimum);
      } else {
        text += bound(least, minimum) + bound(most, maximum);
      }
    };
    side("width", "min-width", "max-width", frame.minWidth, frame.maxWidth);
    side("height", "min-height", "max-height", frame.minHeight, frame.maxHeight);
    if (frame.alignment != Alignment()) text += " " + name(frame.alignment);
    return text;
  }
  std::string operator()(const node::Background& background) const {
    std::string text = "background " + hex(background.color);
    if (background.cornerRadius != 0) text += " radius " + number(background.cornerRadius);
    if (const auto& shadow = background.shadow) {
      text += " shadow " + hex(shadow->color) + " blur " + number(shadow->radius) + " at " +
              number(shadow->x) + " " + number(shadow->y);
    }
    if (background.outline) text += " outline " + hex(*background.outline);
    return text;
  }
  std::string operator()(const node::Overlay& overlay) const { return "overlay " + name(overlay.alignment); }
  std::string operator()(const node::Disabled& disabled) const {
    return disabled.isDisabled ? "disabled" : "enabled";
  }
  std::string operator()(const node::IgnoresSafeArea&) const { return "ignores safe area"; }
  std::string operator()(const node::Accessibility& own) const {
    std::string text = "as " + std::string(rawValue(own.role)) + optionally("named", own.label) +
                       optionally("in", own.language) + optionally("value", own.value) +
                       optionally("description", own.description);
    if (own.isModal) text += " modal";
    if (own.isDismissal) text += " dismissal";
    if (own.focusRequests > 0) text += " asking for the focus";
    return text;
  }
  template <class Other>
  std::string operator()(const Other&) const {
    return {};
  }
};

class TextPrinter {
 public:
  void add(const Element& element, int depth) {
    std::string wrappers;
    std::vector<const Element*> overlays;
    const Element* inner = &element;
    std::optional<std::string> line;
    while (!(line = std::visit(OwnLine(), inner->view.node().content))) {
      wrappers = " | " + std::visit(WrapperText(), inner->view.node().content) + wrappers;
      if (inner->children.size() > 1) overlays.push_back(inner->children[1].get());
      inner = inner->children.front().get();
    }
    text_ += std::string(static_cast<std::size_t>(depth) * 2, ' ') + *line + wrappers + "\n";
    for (const auto& child : inner->children) add(*child, depth + 1);
    for (const Element* overlay : overlays) {
      text_ += std::string(static_cast<std::size_t>(depth) * 2, ' ') + "over it\n";
      add(*overlay, depth + 1);
    }
  }

  std::string take() && { return std::move(text_); }

 private:
  std::string text_;
};

void makeRows(ElementTree& tree, Element& element) {
  if (const auto* rows = std::get_if<node::LazyRows>(&element.view.node().content)) {
    for (std::size_t index = 0; index < rows->count; ++index) tree.row(element, index);
  }
  forEachChild(element, [&](Element& child) { makeRows(tree, child); });
}

}  // namespace

std::string textPicture(const AnyView& view) {
  ElementTree tree([] {});
  tree.render(view);
  makeRows(tree, tree.root());
  TextPrinter printer;
  printer.add(tree.root(), 0);
  return std::move(printer).take();
}

}  // namespace TalvoConsentSDK
