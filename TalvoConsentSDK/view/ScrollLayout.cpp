// How scrolling regions, pinned footers and lazy rows are laid out.

#include <algorithm>

#include "TalvoConsentSDK/view/Layout.h"

namespace TalvoConsentSDK {
namespace view {

ScrollOffset& Layout::scrollOffset(ElementId region) {
  return tree_.memory().get<ScrollOffset>(region, [] { return ScrollOffset(); });
}

// Registers a region, limits the viewport to it, and returns the y coordinate at which its content starts.
double Layout::placeScroller(const Element& element, const Rect& region, double contentHeight) {
  const ScrollRegion scroller{element.id, region, contentHeight};
  scrollRegions_.push_back(scroller);
  auto& [visible, clip, offset] = viewport_;
  if (scroller.maxOffset() > 0) clip = clip ? clip->intersection(region) : region;
  visible = visible.intersection(region);
  offset = &scrollOffset(element.id);
  return region.y - std::clamp(offset->y, 0.0, scroller.maxOffset());
}

Layout::PinnedHeights Layout::pinnedHeights(Element& element, const node::PinnedFooter& pinned,
                                            const Proposal& proposal) {
  const Proposal natural{proposal.width, std::nullopt};
  const double content = size(*element.children[0], natural).height;
  const double footer = size(*element.children[1], natural).height;
  const double room = proposal.height.value_or(infinity);
  if (content + footer <= room) return {content, footer, 0, content, false};
  const double middle = room - footer - pinned.gap - pinned.inset;
  const double minMiddle = pinned.minMiddle * std::max(1.0, environment_.textScale);
  return {content, footer, pinned.inset, middle, middle < std::min(content, minMiddle)};
}

void Layout::placePinned(Element& element, const node::PinnedFooter& pinned, const Rect& frame,
                         const Proposal& proposal) {
  const Proposal natural{proposal.width, std::nullopt};
  Element& content = *element.children[0];
  Element& footer = *element.children[1];
  const PinnedHeights heights = pinnedHeights(element, pinned, proposal);
  const double footerTop = frame.bottom() - heights.footer;

  const Viewport outer = viewport_;
  const double height = heights.scrollsAll ? frame.height - heights.inset : heights.middle;
  const Rect region{frame.x, frame.y + heights.inset, frame.width, std::max(0.0, height)};
  const double all = heights.content + heights.footer;
  const double top = placeScroller(element, region, heights.scrollsAll ? all : heights.content);

  const auto placeAt = [&](Element& child, double y) {
    const Size own = size(child, natural);
    place(child, {frame.x, y, own.width, own.height}, natural);
  };
  placeAt(content, top);
  if (heights.scrollsAll) placeAt(footer, top + heights.content);
  viewport_ = outer;
  if (!heights.scrollsAll) placeAt(footer, footerTop);
}

Size Layout::measureRows(Element& element, const Proposal& proposal) {
  LazyRowsState& state = *element.lazyRows;
  if (state.heights.empty()) return {};
  const double width = proposal.width.value_or(environment_.size.width);
  const Proposal offered{width, std::nullopt};
  if (state.width != width) {
    state.width = width;
    std::ranges::fill(state.heights, -1);
    state.estimate = size(tree_.row(element, 0), offered).height;
  }
  double height = 0;
  for (const double each : state.heights) height += each < 0 ? state.estimate : each;
  return {width, height};
}

// Keeps the rows within one visible height above and below the visible part, so that they exist before they
// scroll into view. Also keeps the first and the last row, so that a key can move the focus into the list. If
// a row above the visible part turns out taller or shorter than expected, the scroll offset changes by the
// difference, so that the visible rows stay in place.
void Layout::placeRows(Element& element, const Rect& frame) {
  LazyRowsState& state = *element.lazyRows;
  const Rect visible = viewport_.visible;
  const double margin = rows_ == Rows::all ? infinity : visible.height;
  const Proposal offered{state.width, std::nullopt};
  double top = frame.y;
  for (std::size_t index = 0; index < state.heights.size(); ++index) {
    double& height = state.heights[index];
    const double expected = height < 0 ? state.estimate : height;
    const bool isFar = top + expected < visible.y - margin || top > visible.bottom() + margin;
    if (isFar && index > 0 && index + 1 < state.heights.size()) {
      const auto row = state.rows.find(index);
      if (row == state.rows.end() || !holdsKept(*row->second)) {
        if (row != state.rows.end()) state.rows.erase(row);
        top += expected;
        continue;
      }
    }
    Element& row = tree_.row(element, index);
    height = size(row, offered).height;
    if (height != expected) rowsChanged_ = true;
    place(row, {frame.x, top, frame.width, height}, offered);
    const bool isAbove = viewport_.offset && top + expected <= visible.y;
    if (isAbove) viewport_.offset->y += height - expected;
    top += isAbove ? expected : height;
  }
  if (rowsChanged_) forgetSizes(element);
}

bool Layout::holdsKept(const Element& element) const {
  bool holds = std::ranges::find(kept_, element.id) != kept_.end();
  forEachChild(element, [&](const Element& child) { holds = holds || holdsKept(child); });
  return holds;
}

}  // namespace view
}  // namespace TalvoConsentSDK
