#include "TalvoConsentSDK/view/Layout.h"

#include <algorithm>
#include <utility>

namespace TalvoConsentSDK {
namespace view {

namespace {

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};

constexpr Size toggleSize{51, 31};
constexpr double dividerHeight = 1;

std::optional<double> reduced(std::optional<double> length, double by) {
  if (!length) return std::nullopt;
  return std::max(0.0, *length - by);
}

// Returns what a frame proposes to its child along one axis.
std::optional<double> framed(std::optional<double> offered, std::optional<double> min,
                             std::optional<double> max) {
  if (min && max && *min == *max) return min;
  if (!offered) return max && *max < infinity ? max : std::nullopt;
  return std::max(min.value_or(0), std::min(*offered, max.value_or(infinity)));
}

// Returns a frame's own length along one axis.
double framedLength(double child, std::optional<double> offered, std::optional<double> min,
                    std::optional<double> max) {
  if (!min && !max) return child;
  const double wanted = max && offered ? std::min(*offered, *max) : std::min(child, max.value_or(infinity));
  return std::max(min.value_or(max ? std::min(child, *max) : 0), wanted);
}

}  // namespace

double shareBefore(HorizontalAlignment alignment) {
  switch (alignment) {
    case HorizontalAlignment::leading:
      return 0;
    case HorizontalAlignment::center:
      return 0.5;
    case HorizontalAlignment::trailing:
      return 1;
  }
  return 0;
}

double shareBefore(VerticalAlignment alignment) {
  switch (alignment) {
    case VerticalAlignment::top:
      return 0;
    case VerticalAlignment::center:
      return 0.5;
    case VerticalAlignment::bottom:
      return 1;
  }
  return 0;
}

Layout::Layout(ElementTree& tree, const ViewEnvironment& environment, Animations& animations)
    : tree_(tree), environment_(environment), animations_(animations) {}

void Layout::run(std::vector<ElementId> kept, Rows rows) {
  kept_ = std::move(kept);
  rows_ = rows;
  const SafeArea& safe = environment_.safeArea;
  const Size window = environment_.size;
  const bool isMirrored = environment_.layoutDirection == LayoutDirection::rightToLeft;
  const Rect area{isMirrored ? safe.right : safe.left, safe.top,
                  std::max(0.0, window.width - safe.left - safe.right),
                  std::max(0.0, window.height - safe.top - safe.bottom)};
  isOpening_ = movesRows_ = false;
  isSettling_ = std::exchange(settles_, false);
  // Repeats while lazy rows turn out taller or shorter than expected, and if a list that opens was moved.
  constexpr int maxPasses = 8;
  for (int pass = 0; pass < maxPasses && (pass == 0 || needsAnotherPass_); ++pass) {
    scrollRegions_.clear();
    moving_.clear();
    needsAnotherPass_ = false;
    viewport_ = {{0, 0, window.width, window.height}, std::nullopt, nullptr};
    placeAligned(tree_.root(), area, {}, {area.width, area.height});
  }
  for (const ScrollRegion& region : scrollRegions_) {
    double& y = scrollOffset(*region.element).y;
    y = std::clamp(y, 0.0, region.maxOffset());
  }
  isMoving_ = !moving_.empty();
  for (Element* each : moving_) forgetSizes(*each);  // it will have another height in the next frame
  std::erase_if(scrollRegions_, [](const ScrollRegion& region) { return region.maxOffset() <= 0; });
  if (isMirrored) {
    mirror(tree_.root());
    for (ScrollRegion& region : scrollRegions_) mirror(region.frame);
  }
}

Size Layout::size(Element& element, Proposal proposal) {
  // The proposed height does not affect a text's size.
  if (std::holds_alternative<node::Text>(element.view.node().content)) proposal.height.reset();
  for (const auto& [asked, answer] : element.sizes) {
    if (asked == proposal) return answer;
  }
  const Size answer = measure(element, proposal);
  constexpr std::size_t maxSizes = 8;
  if (element.sizes.size() == maxSizes) element.sizes.erase(element.sizes.begin());
  element.sizes.emplace_back(proposal, answer);
  return answer;
}

Size Layout::measure(Element& element, const Proposal& proposal) {
  const auto child = [&](std::size_t index, const Proposal& offered) {
    return size(*element.children[index], offered);
  };
  return std::visit(
      Overloaded{
          [](const node::Empty&) { return Size{}; },
          [&](const node::Text& text) {
            return environment_.textMeasurer->measure(text.text, text.font,
                                                      proposal.width.value_or(infinity));
          },
          [&](const node::Symbol& symbol) {
            const double side = symbol.size * environment_.controlScale();
            return Size{side, side};
          },
          [&](const node::AsyncImage& image) { return measureImage(element, image, proposal); },
          [&](const node::Shape&) { return Size{proposal.width.value_or(0), proposal.height.value_or(0)}; },
          [&](const node::Toggle&) {
            const double scale = environment_.controlScale();
            return Size{toggleSize.width * scale, toggleSize.height * scale};
          },
          [&](const node::Stack& stack) { return measureStack(element, stack, proposal); },
          [&](const node::Divider&) { return Size{proposal.width.value_or(0), dividerHeight}; },
          [&](const node::Scroll&) {
            const Size content = child(0, {proposal.width, std::nullopt});
            return Size{content.width, std::min(content.height, proposal.height.value_or(infinity))};
          },
          [&](const node::PinnedEnds& pinned) { return pinnedParts(element, pinned, proposal).size; },
          [&](const node::Disclosure& disclosure) {
            return measureDisclosure(element, disclosure, proposal);
          },
          [&](const node::LazyRows&) { return measureRows(element, proposal); },
          [&](const node::Padding& padding) {
            const Insets& insets = padding.insets;
            const Size content = child(
                0, {reduced(proposal.width, insets.width()), reduced(proposal.height, insets.height())});
            return Size{content.width + insets.width(), content.height + insets.height()};
          },
          [&](const node::Frame& frame) {
            const Size content = child(0, {framed(proposal.width, frame.minWidth, frame.maxWidth),
                                           framed(proposal.height, frame.minHeight, frame.maxHeight)});
            return Size{framedLength(content.width, proposal.width, frame.minWidth, frame.maxWidth),
                        framedLength(content.height, proposal.height, frame.minHeight, frame.maxHeight)};
          },
          [&]<node::OneOf<node::Button, node::Background, node::Overlay, node::Disabled,
                          node::IgnoresSafeArea, node::Accessibility, node::Component>
                  Wrapper>(const Wrapper&) { return child(0, proposal); },
      },
      element.view.node().content);
}

void Layout::place(Element& element, const Rect& frame, const Proposal& proposal) {
  element.frame = frame;
  element.clip = viewport_.clip;
  const auto child = [&](std::size_t index) -> Element& { return *element.children[index]; };
  std::visit(
      Overloaded{
          [&](const node::Stack& stack) { placeStack(element, stack, frame, proposal); },
          [&](const node::Scroll&) {
            const Proposal offered{proposal.width, std::nullopt};
            const Size content = size(child(0), offered);
            const Viewport outer = viewport_;
            const double top = placeScroller(element, frame, content.height);
            place(child(0), {frame.x, top, content.width, content.height}, offered);
            viewport_ = outer;
          },
          [&](const node::PinnedEnds& pinned) { placePinned(element, pinned, frame, proposal); },
          [&](const node::Disclosure& disclosure) { placeDisclosure(element, disclosure, frame, proposal); },
          [&](const node::LazyRows&) { placeRows(element, frame); },
          [&](const node::Padding& padding) {
            const Insets& insets = padding.insets;
            const Proposal offered{reduced(proposal.width, insets.width()),
                                   reduced(proposal.height, insets.height())};
            const Size content = size(child(0), offered);
            place(child(0), {frame.x + insets.leading, frame.y + insets.top, content.width, content.height},
                  offered);
          },
          [&](const node::Frame& bounds) {
            placeAligned(child(0), frame, bounds.alignment,
                         {framed(proposal.width, bounds.minWidth, bounds.maxWidth),
                          framed(proposal.height, bounds.minHeight, bounds.maxHeight)});
          },
          [&](const node::Overlay& overlay) {
            place(child(0), frame, proposal);
            placeAligned(child(1), frame, overlay.alignment, {frame.width, frame.height});
          },
          [&](const node::IgnoresSafeArea&) {
            const Rect window{0, 0, environment_.size.width, environment_.size.height};
            place(child(0), window, {window.width, window.height});
          },
          [&]<node::OneOf<node::Button, node::Background, node::Disabled, node::Accessibility,
                          node::Component>
                  Wrapper>(const Wrapper&) { place(child(0), frame, proposal); },
          []<node::OneOf<node::Empty, node::Text, node::Symbol, node::AsyncImage, node::Shape, node::Toggle,
                         node::Divider>
                 Leaf>(const Leaf&) {},
      },
      element.view.node().content);
}

void Layout::placeAligned(Element& element, const Rect& frame, Alignment alignment,
                          const Proposal& proposal) {
  const Size own = size(element, proposal);
  place(element,
        {frame.x + (frame.width - own.width) * shareBefore(alignment.horizontal),
         frame.y + (frame.height - own.height) * shareBefore(alignment.vertical), own.width, own.height},
        proposal);
}

double Layout::minContentWidth(Element& element) const {
  if (!element.minContentWidth) element.minContentWidth = measureMinContentWidth(element);
  return *element.minContentWidth;
}

double Layout::measureMinContentWidth(const Element& element) const {
  const auto widestChild = [&] {
    double widest = 0;
    forEachChild(element, [&](Element& child) { widest = std::max(widest, minContentWidth(child)); });
    return widest;
  };
  return std::visit(
      Overloaded{
          [&](const node::Text& text) { return environment_.textMeasurer->widestWord(text.text, text.font); },
          [&](const node::Symbol& symbol) { return symbol.size * environment_.controlScale(); },
          [&](const node::Toggle&) { return toggleSize.width * environment_.controlScale(); },
          [&](const node::Stack& stack) {
            if (stack.axis != node::Axis::horizontal || stack.overflow != Overflow::compress) {
              return widestChild();
            }
            double sum = -stack.spacing;
            for (const auto& child : element.children) sum += minContentWidth(*child) + stack.spacing;
            return std::max(0.0, sum);
          },
          [&](const node::Padding& padding) { return widestChild() + padding.insets.width(); },
          [&](const node::Frame& frame) { return std::max(widestChild(), frame.minWidth.value_or(0)); },
          [&](const auto&) { return widestChild(); },  // 0 if there are no children
      },
      element.view.node().content);
}

Size Layout::measureImage(const Element& element, const node::AsyncImage& image, const Proposal& proposal) {
  const auto& loaded = tree_.memory().get<LoadedImage>(element.id, [] { return LoadedImage(); });
  if (!loaded.image || loaded.url != image.url) return {0, image.height};
  const Size natural = loaded.image->size();
  if (natural.width <= 0 || natural.height <= 0) return {0, image.height};
  const double width = image.height * natural.width / natural.height;
  return {std::min(width, proposal.width.value_or(infinity)), image.height};
}

void Layout::mirror(Rect& rect) const {
  rect.x = environment_.size.width - rect.right();
}

void Layout::mirror(Element& element) const {
  mirror(element.frame);
  if (element.clip) mirror(*element.clip);
  forEachChild(element, [this](Element& child) { mirror(child); });
}

}  // namespace view
}  // namespace TalvoConsentSDK
