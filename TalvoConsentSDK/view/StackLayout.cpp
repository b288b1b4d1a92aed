// How stacks share their room among their children.

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "TalvoConsentSDK/view/Layout.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

using node::Axis;
using node::Stack;

double along(Axis axis, const Size& size) {
  return axis == Axis::horizontal ? size.width : size.height;
}
double across(Axis axis, const Size& size) {
  return axis == Axis::horizontal ? size.height : size.width;
}

std::optional<double> along(Axis axis, const Proposal& proposal) {
  return axis == Axis::horizontal ? proposal.width : proposal.height;
}

Proposal withAlong(Axis axis, const Proposal& proposal, std::optional<double> length) {
  return axis == Axis::horizontal ? Proposal{length, proposal.height} : Proposal{proposal.width, length};
}

bool isEmpty(const Element& element) {
  if (const auto& content = element.view.node().content; std::holds_alternative<node::Component>(content)) {
    return isEmpty(*element.children.front());
  }
  return element.view.isEmpty();
}

template <class Items>
Size extent(const Items& items, Axis axis, double spacing) {
  double length = items.empty() ? 0 : -spacing;
  double breadth = 0;
  for (const auto& item : items) {
    length += along(axis, item.size) + spacing;
    breadth = std::max(breadth, across(axis, item.size));
  }
  return axis == Axis::horizontal ? Size{length, breadth} : Size{breadth, length};
}

}  // namespace

Size Layout::measureStack(Element& element, const Stack& stack, const Proposal& proposal) {
  if (stack.axis == Axis::depth) {
    Size largest;
    for (const auto& child : element.children) {
      const Size own = size(*child, proposal);
      largest = {std::max(largest.width, own.width), std::max(largest.height, own.height)};
    }
    return largest;
  }
  if (stack.overflow == Overflow::wrap) {
    return extent(flow(element, stack.spacing, proposal), Axis::vertical, stack.spacing);
  }
  const Axis axis = breaksAWord(element, stack, proposal) ? Axis::vertical : stack.axis;
  return extent(distribute(element, stack, axis, proposal), axis, stack.spacing);
}

void Layout::placeStack(Element& element, const Stack& stack, const Rect& frame, const Proposal& proposal) {
  if (stack.axis == Axis::depth) {
    for (const auto& child : element.children) placeAligned(*child, frame, stack.alignment, proposal);
    return;
  }
  const auto placeItems = [&](std::vector<StackItem> items, Axis axis, const Rect& area) {
    const double share = axis == Axis::horizontal ? shareBefore(stack.alignment.vertical)
                                                  : shareBefore(stack.alignment.horizontal);
    const double breadth = across(axis, area.size());
    double start = axis == Axis::horizontal ? area.x : area.y;
    for (StackItem& item : items) {
      // In a row, a child that takes the height it is offered becomes as high as the highest one.
      if (axis == Axis::horizontal && item.size.height < breadth) {
        item.proposal.height = breadth;
        item.size = size(*item.element, item.proposal);
      }
      const double offset = (breadth - across(axis, item.size)) * share;
      place(*item.element,
            axis == Axis::horizontal ? Rect{start, area.y + offset, item.size.width, item.size.height}
                                     : Rect{area.x + offset, start, item.size.width, item.size.height},
            item.proposal);
      start += along(axis, item.size) + stack.spacing;
    }
  };

  if (stack.overflow == Overflow::wrap) {
    double top = frame.y;
    for (const FlowLine& line : flow(element, stack.spacing, proposal)) {
      placeItems(line.items, Axis::horizontal, {frame.x, top, line.size.width, line.size.height});
      top += line.size.height + stack.spacing;
    }
    return;
  }
  const Axis axis = breaksAWord(element, stack, proposal) ? Axis::vertical : stack.axis;
  placeItems(distribute(element, stack, axis, proposal), axis, frame);
}

// Offers each child an equal share of the room that is left, the least flexible child first. Empty views are
// left out, so that they cause no gap.
std::vector<Layout::StackItem> Layout::distribute(Element& element, const Stack& stack, Axis axis,
                                                  const Proposal& proposal) {
  std::vector<StackItem> items;
  for (const auto& child : element.children) {
    if (!isEmpty(*child)) items.push_back({child.get(), proposal, {}});
  }
  const auto offered = along(axis, proposal);
  if (!offered) {
    for (StackItem& item : items) item.size = size(*item.element, item.proposal);
    if (axis == stack.axis) return items;
    // Stacked because they do not fit into a row, they are still as high as the highest one.
    const double highest = extent(items, stack.axis, 0).height;
    for (StackItem& item : items) {
      item.proposal.height = highest;
      item.size = size(*item.element, item.proposal);
    }
    return items;
  }

  std::multimap<double, StackItem*> byFlexibility;  // keeps the order of equally flexible ones
  for (StackItem& item : items) byFlexibility.emplace(flexibility(*item.element, axis, proposal), &item);

  double left = *offered - stack.spacing * static_cast<double>(items.empty() ? 0 : items.size() - 1);
  auto sharers = static_cast<double>(items.size());
  for (const auto& [unused, item] : byFlexibility) {
    item->proposal = withAlong(axis, proposal, std::max(0.0, left / sharers));
    item->size = size(*item->element, item->proposal);
    left -= along(axis, item->size);
    --sharers;
  }
  return items;
}

std::vector<Layout::FlowLine> Layout::flow(Element& element, double spacing, const Proposal& proposal) {
  const double room = proposal.width.value_or(infinity);
  std::vector<FlowLine> lines;
  for (const auto& child : element.children) {
    if (isEmpty(*child)) continue;
    StackItem item{child.get(), {}, size(*child, {})};
    if (item.size.width > room) {
      item.proposal = {room, std::nullopt};
      item.size = size(*child, item.proposal);
    }
    if (lines.empty() || lines.back().size.width + spacing + item.size.width > room) lines.emplace_back();
    lines.back().items.push_back(item);
    lines.back().size = extent(lines.back().items, Axis::horizontal, spacing);
  }
  return lines;
}

double Layout::flexibility(Element& child, Axis axis, const Proposal& proposal) {
  const double longest = along(axis, size(child, withAlong(axis, proposal, infinity)));
  if (!std::isfinite(longest)) return infinity;
  const double shortest = axis == Axis::horizontal ? minContentWidth(child)
                                                   : along(axis, size(child, withAlong(axis, proposal, 0)));
  return longest - shortest;
}

bool Layout::breaksAWord(Element& element, const Stack& stack, const Proposal& proposal) {
  if (stack.overflow != Overflow::stackAtBrokenWord || !proposal.width) return false;
  const auto isBroken = [this](const StackItem& item) {
    return minContentWidth(*item.element) > item.proposal.width.value_or(infinity);
  };
  return std::ranges::any_of(distribute(element, stack, stack.axis, proposal), isBroken);
}

}  // namespace view
}  // namespace TalvoConsentSDK
