#include "TalvoConsentSDK/view/Visual.h"

#include <algorithm>
#include <utility>

#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

constexpr double pressedOpacity = 0.6;
constexpr double disabledOpacity = 0.45;
constexpr double switchOutlineReach = 2;  // so that it does not touch the knob
constexpr double boxOutlineReach = 1;     // half of it, so that it hides the box's edge

enum Part { mainPart, shadowPart, ringPart, upperEdgePart, lowerEdgePart, outlinePart };

class Flattener {
 public:
  Flattener(ElementTree& tree, const ViewEnvironment& environment, const VisualState& state,
            Animations& animations)
      : memory_(tree.memory()),
        window_{0, 0, environment.size.width, environment.size.height},
        isMirrored_(environment.layoutDirection == LayoutDirection::rightToLeft),
        hasHighContrast_(environment.highContrast),
        state_(state),
        animations_(animations) {}

  void add(const Element& element, double opacity, bool isDisabled) {
    if (state_.pressed == element.id) opacity *= pressedOpacity;
    std::visit([&](const auto& content) { draw(element, content, opacity, isDisabled); },
               element.view.node().content);
    if (state_.ringed == element.id) ring_ = &element;
  }

  // A hairline where scrolled content disappears, so that it is seen to go on.
  void addScrollEdges() {
    constexpr Color hairline{0.5, 0.5, 0.5, 0.45};
    for (const ScrollRegion& region : state_.scrollRegions) {
      const double y = memory_.get<ScrollOffset>(region.id, [] { return ScrollOffset(); }).y;
      const Rect& f = region.frame;
      const visual::Box line{strong(hairline)};
      if (y > 0.5) push(region.id, upperEdgePart, {f.x, f.y, f.width, 0.5}, {}, 1, line);
      if (y < region.maxOffset() - 0.5) {
        push(region.id, lowerEdgePart, {f.x, f.bottom() - 0.5, f.width, 0.5}, {}, 1, line);
      }
    }
  }

  void addRing() {
    if (!ring_) return;
    constexpr Color inner{1, 1, 1, 1};
    constexpr Color outer{0.03, 0.2, 0.6, 1};  // so far from white that one of them is 3:1 from any colour
    const Look seen = look(*ring_);
    pushAround(*ring_, ringPart, seen.reach, 1, {inner, outer, seen.cornerRadius});
  }

  // Switches and backgrounds with an outline are drawn with it where high contrast is asked for.
  void addOutline(const Element& element, double reach, double opacity, const Color& color,
                  double cornerRadius) {
    if (hasHighContrast_) {
      pushAround(element, outlinePart, reach, opacity, {Color::clear(), strong(color), cornerRadius});
    }
  }

  std::vector<Visual> take() && { return std::move(visuals_); }

 private:
  void addChildren(const Element& element, double opacity, bool isDisabled) {
    forEachChild(element, [&](const Element& child) { add(child, opacity, isDisabled); });
  }

  void draw(const Element& element, const node::Text& text, double opacity, bool) {
    pushMain(
        element, opacity,
        visual::Text{text.text, text.font, strong(text.color), text.isUnderlined, alignment(text.alignment)});
  }

  void draw(const Element& element, const node::Symbol& symbol, double opacity, bool) {
    pushMain(element, opacity,
             visual::Symbol{symbol.glyph, symbol.weight, strong(symbol.color),
                            animations_.value(element.id, symbol.turns), isMirrored_});
  }

  void draw(const Element& element, const node::AsyncImage& image, double opacity, bool) {
    const auto& loaded = memory_.get<LoadedImage>(element.id, [] { return LoadedImage(); });
    if (loaded.image && loaded.url == image.url) pushMain(element, opacity, visual::Picture{loaded.image});
  }

  void draw(const Element& element, const node::Shape& shape, double opacity, bool) {
    pushMain(element, opacity, visual::Box{shape.color});
  }

  void draw(const Element& element, const node::Divider& line, double opacity, bool) {
    pushMain(element, opacity, visual::Box{strong(line.color)});
  }

  void draw(const Element& element, const node::Toggle& toggle, double opacity, bool isDisabled) {
    if (isDisabled) opacity *= disabledOpacity;
    pushMain(element, opacity,
             visual::Switch{toggle.onColor, toggle.offColor, toggle.knobColor,
                            animations_.value(element.id, toggle.isOn ? 1 : 0), isMirrored_});
    addOutline(element, switchOutlineReach, opacity, toggle.offColor, element.frame.height / 2);
  }

  void draw(const Element& element, const node::Background& background, double opacity, bool isDisabled) {
    if (background.shadow) {
      push(element.id, shadowPart, element.frame, element.clip, opacity,
           visual::BoxShadow{*background.shadow, background.cornerRadius});
    }
    pushMain(element, opacity, visual::Box{strong(background.color), background.cornerRadius});
    if (background.outline) {
      addOutline(element, boxOutlineReach, opacity, *background.outline, background.cornerRadius);
    }
    addChildren(element, opacity, isDisabled);
  }

  void draw(const Element& element, const node::Button&, double opacity, bool isDisabled) {
    addChildren(element, isDisabled ? opacity * disabledOpacity : opacity, isDisabled);
  }

  void draw(const Element& element, const node::Opacity& own, double opacity, bool isDisabled) {
    addChildren(element, opacity * own.opacity, isDisabled);
  }

  void draw(const Element& element, const node::Disabled& own, double opacity, bool isDisabled) {
    addChildren(element, opacity, isDisabled || own.isDisabled);
  }

  template <node::OneOf<node::Empty, node::Stack, node::Spacer, node::Scroll, node::PinnedFooter,
                        node::LazyRows, node::Padding, node::Frame, node::Overlay, node::IgnoresSafeArea,
                        node::Accessibility, node::Component>
                Container>
  void draw(const Element& element, const Container&, double opacity, bool isDisabled) {
    addChildren(element, opacity, isDisabled);
  }

  Color strong(const Color& color) const {
    return hasHighContrast_ && color.alpha > 0 ? color.withAlpha(1) : color;
  }

  // What a control is seen as.
  struct Look {
    double cornerRadius = 3;  // of a text, whose letters it leaves alone
    double reach = 4;         // of the ring
  };

  Look look(const Element& element) const {
    const double boxed = hasHighContrast_ ? 7 : 5;  // clear of the outline
    const auto& content = element.view.node().content;
    if (std::holds_alternative<node::Toggle>(content)) return {element.frame.height / 2, boxed};
    if (const auto* background = std::get_if<node::Background>(&content)) {
      return {background->cornerRadius, boxed};
    }
    return element.children.size() == 1 ? look(*element.children.front()) : Look();
  }

  // What reaches beyond an element is seen beyond the sides of its list as well, and a ring beyond its ends.
  void pushAround(const Element& element, Part part, double reach, double opacity, visual::FocusRing ring) {
    auto clip = element.clip;
    if (clip && !element.frame.intersects(*clip)) return;
    if (clip) {
      const Rect grown = clip->grownBy(reach);
      clip = part == ringPart ? grown : Rect{grown.x, clip->y, grown.width, clip->height};
    }
    ring.cornerRadius += reach;
    push(element.id, part, element.frame.grownBy(reach), clip, opacity, ring);
  }

  void pushMain(const Element& element, double opacity, visual::Content content) {
    push(element.id, mainPart, element.frame, element.clip, opacity, std::move(content));
  }

  void push(ElementId id, int part, const Rect& frame, const std::optional<Rect>& clip, double opacity,
            visual::Content content) {
    const bool isSeen = frame.intersects(window_) && (!clip || frame.intersects(*clip));
    if (!isSeen && part != shadowPart) return;
    visuals_.push_back({id, part, frame, clip, opacity, std::move(content)});
  }

  visual::TextAlignment alignment(HorizontalAlignment own) const {
    switch (own) {
      case HorizontalAlignment::leading:
        return isMirrored_ ? visual::TextAlignment::right : visual::TextAlignment::left;
      case HorizontalAlignment::center:
        return visual::TextAlignment::center;
      case HorizontalAlignment::trailing:
        return isMirrored_ ? visual::TextAlignment::left : visual::TextAlignment::right;
    }
    return visual::TextAlignment::left;
  }

  ElementMemory& memory_;
  const Rect window_;
  const bool isMirrored_;
  const bool hasHighContrast_;
  const VisualState& state_;
  Animations& animations_;
  const Element* ring_ = nullptr;
  std::vector<Visual> visuals_;
};

}  // namespace

std::vector<Visual> visuals(ElementTree& tree, const ViewEnvironment& environment, const VisualState& state,
                            Animations& animations) {
  Flattener flattener(tree, environment, state, animations);
  flattener.add(tree.root(), 1, false);
  flattener.addScrollEdges();
  flattener.addRing();
  return std::move(flattener).take();
}

}  // namespace view
}  // namespace TalvoConsentSDK
