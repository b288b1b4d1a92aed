// How scrolling regions, what stays around them, disclosures and lazy rows are laid out.

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "TalvoConsentSDK/view/Layout.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

constexpr double titleGap = 12;           // on both sides of a title that is beside a bar
constexpr double maxHeader = 1.0 / 3;     // of the room; the title of a taller header scrolls
constexpr double largeMiddle = 2.0 / 5;   // of the room; if less is left, links scroll
constexpr double enoughMiddle = 1.0 / 3;  // of the room; if as much is left, the title and the footer stay
constexpr double maxCut = 54;             // of a scrolling part; more of a high one if texts are larger
constexpr double hiddenPart = 6;          // of the line that the lower edge cuts; times the text scale
constexpr double fadedPart = 8;           // of the same line, likewise; as much as is hidden is seen above it
constexpr double maxFadedPart = 14;       // whatever the text scale
constexpr double maxRest = 40;            // below a list that opens: margins, but no row

/// Whether a disclosure has been placed fully open. Stored under its identity.
struct Disclosed {
  bool isDone;
};

}  // namespace

ScrollOffset& Layout::scrollOffset(const Element& region) {
  return tree_.memory().get<ScrollOffset>(region.id, [] { return ScrollOffset(); });
}

// Registers a region, limits the viewport to it, and returns the y coordinate at which its content starts.
double Layout::placeScroller(Element& element, const Rect& region, double contentHeight) {
  const ScrollRegion scroller{element.id, &element, region, contentHeight};
  scrollRegions_.push_back(scroller);
  auto& [visible, clip, offset, end] = viewport_;
  if (scroller.maxOffset() > 0) clip = clip ? clip->intersection(region) : region;
  visible = visible.intersection(region);
  offset = &scrollOffset(element);
  const double top = region.y - std::clamp(offset->y, 0.0, scroller.maxOffset());
  end = top + contentHeight;
  return top;
}

Layout::PinnedParts Layout::pinnedParts(Element& element, const node::PinnedEnds& pinned,
                                        const Proposal& proposal) {
  Element& titleElement = *element.children[1];
  const Proposal natural{proposal.width, std::nullopt};
  const Size bar = size(*element.children[0], {});
  const Size content = size(*element.children[2], natural);
  const Size links = size(*element.children[3], natural);
  const Size footer = size(*element.children[4], natural);

  PinnedParts parts;
  parts.title = natural;
  parts.titleY = bar.height;
  if (proposal.width) {
    const double left = *proposal.width - pinned.closeRoom;
    const double besideBar = left - bar.width - 2 * titleGap;
    if (bar.width == 0) {
      parts.title.width = left;
    } else if (size(titleElement, {}).width <= besideBar) {
      parts.title.width = besideBar;
      parts.titleX = bar.width + titleGap;
      parts.titleY = 0;
    }
  }
  const Size title = size(titleElement, parts.title);
  const double header = std::max(bar.height, parts.titleY + title.height);
  if (parts.titleX > 0) parts.barY = std::max(0.0, (title.height - bar.height - pinned.overlap) / 2);
  const double all = header + content.height + links.height + footer.height;

  ScrollOffset& offset = scrollOffset(element);
  const double room = proposal.height.value_or(infinity);
  const bool canHold = pinned.growsUp && offset.held == infinity && offset.height < room;
  if (isOpening_ && canHold) offset.held = offset.height;
  const double height = std::min({all, room, offset.held});
  parts.size = {std::max({parts.titleX + title.width, content.width, links.width, footer.width}), height};
  parts.top = parts.contentTop = header;
  parts.footer = links.height + footer.height;
  if (height == all) return parts;

  parts.growth = std::min(all, room) - height;
  const Proposal naturalTitle = bar.width > 0 ? natural : parts.title;
  const double minMiddle = pinned.minMiddle * std::max(1.0, environment_.textScale);
  const double large = std::max(minMiddle, room * largeMiddle);
  const double enough = std::clamp(room * enoughMiddle, pinned.minMiddle, minMiddle);
  // Returns whether enough room is left for what scrolls.
  const auto scroll = [&](bool scrollsTitle, bool scrollsLinks, bool scrollsFooter) {
    parts.scrollsTitle = scrollsTitle;
    parts.scrollsLinks = scrollsLinks;
    parts.scrollsFooter = scrollsFooter;
    parts.footer = (scrollsLinks ? 0 : links.height) + (scrollsFooter ? 0 : footer.height);
    parts.top = scrollsTitle ? bar.height : std::max(0.0, header - pinned.overlap);
    parts.contentTop = scrollsTitle ? bar.height : header;
    const double scrolledTitle = scrollsTitle ? size(titleElement, naturalTitle).height : 0;
    parts.scrolled = parts.contentTop - parts.top + scrolledTitle + content.height + links.height +
                     footer.height - parts.footer;
    const double gap = parts.footer > 0 ? pinned.gap : 0;
    return room - parts.top - parts.footer - gap >= std::min(parts.scrolled, scrollsLinks ? enough : large);
  };
  const bool hasTitle = title.height > 0 && header - pinned.overlap > bar.height;
  const bool isHigh = hasTitle && parts.titleX == 0 && header > room * maxHeader;
  scroll(isHigh, false, false) || scroll(isHigh, true, false) || scroll(hasTitle, true, false) ||
      scroll(isHigh, true, true) || scroll(hasTitle, true, true);
  if (parts.scrollsTitle) {
    parts.title = naturalTitle;
    parts.barY = 0;
  }
  return parts;
}

void Layout::placePinned(Element& element, const node::PinnedEnds& pinned, const Rect& frame,
                         const Proposal& proposal) {
  const Proposal natural{proposal.width, std::nullopt};
  const PinnedParts parts = pinnedParts(element, pinned, proposal);
  ScrollOffset& offset = scrollOffset(element);
  const double cut = offset.height > 0 ? animations_.value(element.id, offset.cut) : offset.cut;
  if (cut != offset.cut) moving_.push_back(&element);
  offset.height = frame.height;
  offset.growth = parts.growth;
  if (parts.growth == 0) offset.held = infinity;

  const auto placeAt = [&](Element& child, double x, double y, const Proposal& offered) {
    const Size own = size(child, offered);
    place(child, {frame.x + x, y, own.width, own.height}, offered);
    return y + own.height;
  };
  placeAt(*element.children[0], 0, frame.y + parts.barY, {});
  Element& title = *element.children[1];
  if (!parts.scrollsTitle) placeAt(title, parts.titleX, frame.y + parts.titleY, parts.title);
  const double end = frame.bottom() - parts.footer;

  const Viewport outer = viewport_;
  const double top = frame.y + parts.top;
  const double height = std::max(0.0, end - top);
  const double scrolled = parts.scrolled > 0 ? parts.scrolled : height;
  // At the end of the content, nothing is cut off.
  const double shownCut = std::clamp(scrolled - height - offset.y, 0.0, std::min(cut, height));
  double y = placeScroller(element, {frame.x, top, frame.width, height - shownCut}, scrolled - shownCut) +
             parts.contentTop - parts.top;
  viewport_.end += shownCut;
  if (parts.scrollsTitle) y = placeAt(title, 0, y, parts.title);
  y = placeAt(*element.children[2], 0, y, natural);
  if (parts.scrollsLinks) y = placeAt(*element.children[3], 0, y, natural);
  if (parts.scrollsFooter) placeAt(*element.children[4], 0, y, natural);
  viewport_ = outer;
  y = end;
  if (!parts.scrollsLinks) y = placeAt(*element.children[3], 0, y, natural);
  if (!parts.scrollsFooter) placeAt(*element.children[4], 0, y, natural);

  // A cut between two lines would look like the end of the content. While the user scrolls or a list moves,
  // the edge stays. Once a list has opened or closed, or scrolling has ended, it moves only if it has to.
  const bool isAtStart = offset.y == 0 && offset.held == infinity;
  if (needsAnotherPass_ || !moving_.empty() || (!isAtStart && !isSettling_)) return;
  const double scale = std::max(1.0, environment_.textScale);
  const double hidden = hiddenPart * scale;
  const double unseen = hidden + std::min(fadedPart * scale, maxFadedPart);
  const std::array<bool, 5> scrolls = {false, parts.scrollsTitle, true, parts.scrollsLinks,
                                       parts.scrollsFooter};
  const auto wanted = [&](double least) {
    double line = 0;
    for (std::size_t part = 0; part < scrolls.size(); ++part) {
      if (!scrolls[part]) continue;
      line = std::max(line, endOfLine(*element.children[part], end - least - unseen));
    }
    return std::max(least, end - line + hidden);
  };
  const double gap = parts.footer > 0 ? pinned.gap : 0;
  double most = std::clamp(height / 5, maxCut, maxCut * scale);
  if (!isAtStart && offset.revealed) {
    const double revealed = endOf(*offset.revealed, element);
    if (revealed <= end - gap) most = std::min(most, end - revealed - ScrollRegion::fadedEdge);
  }
  if (!isAtStart && offset.cut <= most && wanted(offset.cut) == offset.cut) return;
  double newCut = parts.scrolled == 0 ? gap : wanted(gap);
  if (newCut > most) newCut = gap;
  if (newCut != std::exchange(offset.cut, newCut)) needsAnotherPass_ = true;
}

// Returns the end of the last line, switch or filled box that begins above `limit`.
double Layout::endOfLine(Element& element, double limit) {
  const Rect& frame = element.frame;
  const auto& content = element.view.node().content;
  double end = 0;
  forEachChild(element, [&](Element& child) { end = std::max(end, endOfLine(child, limit)); });
  if (frame.y >= limit) return end;
  const auto* text = std::get_if<node::Text>(&content);
  const bool isBox =
      std::holds_alternative<node::Toggle>(content) || std::holds_alternative<node::Background>(content);
  if (text || isBox) end = frame.bottom();
  if (text && end > limit) {
    const auto newlines = static_cast<double>(std::ranges::count(text->text, '\n'));
    double line = size(element, {infinity, std::nullopt}).height / (newlines + 1);
    const bool isShrunk = std::abs(std::remainder(frame.height, line)) > 0.5;
    if (isShrunk) line *= std::min(1.0, frame.width / minContentWidth(element));
    end = frame.y + std::ceil((limit - frame.y) / line) * line;
  }
  return end;
}

// How much of an opened list must be seen: three and a half vendors.
double Layout::firstHeight() const {
  return 184 * std::max(1.0, environment_.textScale);
}

Size Layout::measureDisclosure(Element& element, const node::Disclosure& disclosure,
                               const Proposal& proposal) {
  const double shown = animations_.value(element.id, disclosure.isOpen ? 1 : 0);
  Disclosed& before = tree_.memory().get<Disclosed>(element.id, [&] { return Disclosed{shown == 1}; });
  if (!disclosure.isOpen) before.isDone = false;
  if (shown == 0 && !disclosure.isOpen && !element.children.empty()) {
    element.children.clear();
    isSettling_ = true;
  }
  if (element.children.empty()) return {};
  if (!before.isDone && disclosure.isOpen) isOpening_ = isSettling_ = true;
  const Size content = size(*element.children.front(), {proposal.width, std::nullopt});
  if (shown == 1) return content;
  // What lies below the window's edge does not count: the motion would be too fast to see.
  const double visible = std::max(firstHeight(), environment_.size.height - element.frame.y);
  return {content.width, std::min(content.height, visible) * shown};
}

void Layout::placeDisclosure(Element& element, const node::Disclosure& disclosure, const Rect& frame,
                             const Proposal& proposal) {
  const double shown = animations_.value(element.id, disclosure.isOpen ? 1 : 0);
  if (shown != (disclosure.isOpen ? 1 : 0)) {
    moving_.push_back(&element);
    movesRows_ = true;
  }
  if (element.children.empty()) return;
  const Proposal offered{proposal.width, std::nullopt};
  const Size content = size(*element.children.front(), offered);

  const Viewport outer = viewport_;
  Disclosed& before = tree_.memory().get<Disclosed>(element.id, [] { return Disclosed{}; });
  if (disclosure.isOpen && !before.isDone && outer.offset) {
    const double rest = outer.end - frame.bottom();
    const bool isLast = content.height <= firstHeight() && rest <= maxRest;
    const double wanted = (isLast ? content.height + rest : std::min(content.height, firstHeight())) * shown;
    // The row that opens stays in sight, too.
    const double distance =
        std::min(frame.y + wanted - outer.visible.bottom(),
                 element.parent->frame.y - outer.visible.y - ScrollRegion::fadedEdge + outer.offset->growth);
    if (distance > 0.01) {
      outer.offset->moveUp(distance);
      forgetSizes(element);
      needsAnotherPass_ = true;
    }
  }
  if (shown < 1) {
    viewport_.clip = outer.clip ? outer.clip->intersection(frame) : frame;
    viewport_.visible = outer.visible.intersection(frame);
  }
  before.isDone = shown == 1;
  place(*element.children.front(), {frame.x, frame.y, content.width, content.height}, offered);
  viewport_ = outer;
}

Size Layout::measureRows(Element& element, const Proposal& proposal) {
  RowHeights& state = element.lazyRows->measured;
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
  auto& [measured, rows] = *element.lazyRows;
  const Rect visible = viewport_.visible;
  const double margin = rows_ == Rows::all ? infinity : visible.height;
  const Proposal offered{measured.width, std::nullopt};
  double top = frame.y;
  for (std::size_t index = 0; index < measured.heights.size(); ++index) {
    double& height = measured.heights[index];
    const double expected = height < 0 ? measured.estimate : height;
    const bool isFar = top + expected < visible.y - margin || top > visible.bottom() + margin;
    if (isFar && index > 0 && index + 1 < measured.heights.size()) {
      const auto row = rows.find(index);
      if (row == rows.end() || !holdsKept(*row->second)) {
        if (row != rows.end()) rows.erase(row);
        top += expected;
        continue;
      }
    }
    Element& row = tree_.row(element, index);
    height = size(row, offered).height;
    if (height != expected) needsAnotherPass_ = true;
    place(row, {frame.x, top, frame.width, height}, offered);
    const bool isAbove = viewport_.offset && top + expected <= visible.y;
    if (isAbove) viewport_.offset->y += height - expected;
    top += isAbove ? expected : height;
  }
  if (needsAnotherPass_) forgetSizes(element);
}

// Returns the end of the element `id` if it is in `element`, and 0 if it is not.
double Layout::endOf(ElementId id, const Element& element) const {
  double end = element.id == id ? element.frame.bottom() : 0;
  forEachChild(element, [&](const Element& child) { end = std::max(end, endOf(id, child)); });
  return end;
}

bool Layout::holdsKept(const Element& element) const {
  bool holds = std::ranges::find(kept_, element.id) != kept_.end();
  forEachChild(element, [&](const Element& child) { holds = holds || holdsKept(child); });
  return holds;
}

}  // namespace view
}  // namespace TalvoConsentSDK
