#include "TalvoConsentSDK/view/Visual.h"

#include <algorithm>
#include <utility>

#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

constexpr double pressedOpacity = 0.6;
constexpr double disabledOpacity = 0.45;
constexpr double switchOutlineReach = 2;  // keeps the outline clear of the knob
constexpr double boxOutlineReach = 1;     // half the stroke, so that the outline covers the box's edge

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

  void addRing() {
    if (!ring_) return;
    constexpr Color inner{1, 1, 1, 1};
    constexpr Color outer{0.03, 0.2, 0.6, 1};  // any colour has at least 3:1 contrast to this or to white
    const RingShape shape = ringShape(*ring_);
    pushAround(*ring_, ringPart, shape.reach, 1, {inner, outer, shape.cornerRadius});
  }

  // Draws the outline of a switch or a background if high contrast is on.
  void addOutline(const Element& element, double reach, double opacity, const Color& color,
                  double cornerRadius) {
    if (hasHighContrast_) {
      pushAround(element, outlinePart, reach, opacity, {Color::clear(), solid(color), cornerRadius});
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
        visual::Text{text.text, text.font, solid(text.color), text.isUnderlined, alignment(text.alignment)});
  }

  void draw(const Element& element, const node::Symbol& symbol, double opacity, bool) {
    pushMain(element, opacity,
             visual::Symbol{symbol.glyph, symbol.weight, solid(symbol.color),
                            animations_.value(element.id, symbol.turns), isMirrored_});
  }

  void draw(const Element& element, const node::AsyncImage& image, double opacity, bool) {
    const auto& loaded = memory_.get<LoadedImage>(element.id, [] { return LoadedImage(); });
    if (!loaded.image || loaded.url != image.url) return;
    const Size natural = loaded.image->size();
    const double height =
        std::min(element.frame.height, element.frame.width * natural.height / natural.width);
    const Rect shown{element.frame.x, element.frame.center().y - height / 2, element.frame.width, height};
    push(element.id, mainPart, shown, element.clip, opacity, visual::Picture{loaded.image});
  }

  // Scrolled content fades into the background at each edge where there is more of it.
  template <node::OneOf<node::Scroll, node::PinnedEnds> Scroller>
  void draw(const Element& element, const Scroller&, double opacity, bool isDisabled) {
    addChildren(element, opacity, isDisabled);
    for (const ScrollRegion& region : state_.scrollRegions) {
      if (region.id != element.id) continue;
      const double y = memory_.get<ScrollOffset>(element.id, [] { return ScrollOffset(); }).y;
      const Rect& f = region.frame;
      const double height = std::min(ScrollRegion::fadedEdge, f.height / 4);
      const auto edge = [&](Part part, double top, double hidden, int fade) {
        if (hidden < 0.5) return;
        const double share = std::min(1.0, hidden / height);
        push(element.id, part, {f.x, top, f.width, height}, {}, opacity * share,
             visual::Box{backdrop_, 0, fade});
      };
      edge(upperEdgePart, f.y, y, 1);
      edge(lowerEdgePart, f.bottom() - height, region.maxOffset() - y, -1);
    }
  }

  void draw(const Element& element, const node::Shape& shape, double opacity, bool) {
    pushMain(element, opacity, visual::Box{shape.color});
  }

  void draw(const Element& element, const node::Divider& line, double opacity, bool) {
    pushMain(element, opacity, visual::Box{solid(line.color)});
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
    if (!isOnItsOwnColor(element.frame, solid(background.color)))
      pushMain(element, opacity, visual::Box{solid(background.color), background.cornerRadius});
    if (background.outline) {
      addOutline(element, boxOutlineReach, opacity, *background.outline, background.cornerRadius);
    }
    const Color outer = std::exchange(backdrop_, solid(background.color));
    addChildren(element, opacity, isDisabled);
    backdrop_ = outer;
  }

  void draw(const Element& element, const node::Button&, double opacity, bool isDisabled) {
    addChildren(element, isDisabled ? opacity * disabledOpacity : opacity, isDisabled);
  }

  void draw(const Element& element, const node::Disabled& own, double opacity, bool isDisabled) {
    addChildren(element, opacity, isDisabled || own.isDisabled);
  }

  template <
      node::OneOf<node::Empty, node::Stack, node::Disclosure, node::LazyRows, node::Padding, node::Frame,
                  node::Overlay, node::IgnoresSafeArea, node::Accessibility, node::Component>
          Container>
  void draw(const Element& element, const Container&, double opacity, bool isDisabled) {
    addChildren(element, opacity, isDisabled);
  }

  Color solid(const Color& color) const {
    return hasHighContrast_ && color.alpha > 0 ? color.withAlpha(1) : color;
  }

  // The shape of the focus ring around a control. The defaults are for a control that contains neither a
  // switch nor a background, such as a link, and keep the ring off its letters.
  struct RingShape {
    double cornerRadius = 3;
    double reach = 4;  // how far the ring extends beyond the control
  };

  RingShape ringShape(const Element& element) const {
    const double boxReach = hasHighContrast_ ? 7 : 5;  // keeps the ring clear of the outline
    const auto& content = element.view.node().content;
    if (std::holds_alternative<node::Toggle>(content)) return {element.frame.height / 2, boxReach};
    if (const auto* background = std::get_if<node::Background>(&content)) {
      return {background->cornerRadius, boxReach};
    }
    return element.children.size() == 1 ? ringShape(*element.children.front()) : RingShape();
  }

  // Draws an outline around an element. Inside a scrolling list the outline may extend beyond the list's
  // sides, and a focus ring also beyond its top and bottom. If the focused element is scrolled out of sight,
  // the ring surrounds the list.
  void pushAround(const Element& element, Part part, double reach, double opacity, visual::FocusRing ring) {
    auto clip = element.clip;
    Rect frame = element.frame;
    if (clip && !frame.intersects(*clip)) {
      if (part != ringPart) return;
      frame = *clip;
    }
    if (clip) {
      const Rect grown = clip->grownBy(reach);
      clip = part == ringPart ? grown : Rect{grown.x, clip->y, grown.width, clip->height};
    }
    ring.cornerRadius += reach;
    push(element.id, part, frame.grownBy(reach), clip, opacity, ring);
  }

  void pushMain(const Element& element, double opacity, visual::Content content) {
    push(element.id, mainPart, element.frame, element.clip, opacity, std::move(content));
  }

  // Whether a box would lie on nothing but a box of the same opaque colour. It is not drawn: it would appear
  // while the window fades, because each visual is then translucent by itself.
  bool isOnItsOwnColor(const Rect& frame, const Color& color) const {
    const auto below = std::find_if(visuals_.rbegin(), visuals_.rend(),
                                    [&](const Visual& each) { return each.frame.intersects(frame); });
    if (below == visuals_.rend() || below->clip || below->frame.intersection(frame) != frame) return false;
    const auto* box = std::get_if<visual::Box>(&below->content);
    return box && box->fade == 0 && box->color == color && color.alpha >= 1;
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
  Color backdrop_ = Color::clear();
  const Element* ring_ = nullptr;
  std::vector<Visual> visuals_;
};

}  // namespace

std::vector<Visual> visuals(ElementTree& tree, const ViewEnvironment& environment, const VisualState& state,
                            Animations& animations) {
  Flattener flattener(tree, environment, state, animations);
  flattener.add(tree.root(), 1, false);
  flattener.addRing();
  return std::move(flattener).take();
}

}  // namespace view
}  // namespace TalvoConsentSDK
