// How a HostingController handles touches, wheels and keys.

#include <algorithm>
#include <cmath>
#include <ranges>

#include "TalvoConsentSDK/view/HostingController.h"
#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

constexpr double touchSlop = 10;  // points; a finger that moves farther drags instead of tapping

}  // namespace

void HostingController::touchBegan(Point point, Clock::time_point now) {
  const bool wasFlinging = motion_.isFlinging();
  motion_.stop();
  touchStart_ = point;
  isDragging_ = false;
  pressed_.reset();  // in case the end of the last touch got lost
  focusIsVisible_ = false;
  const AccessibleElement* control = controlAt(accessibleElements(), point);
  // While a list opens, its rows move below the finger: only what opens and closes lists can be tapped then.
  const bool isStill = !wasFlinging && (!layout_.movesRows() || (control && control->role == Role::expander));
  if (control && control->isEnabled && isStill) pressed_ = control->id;
  if (const ScrollRegion* region = regionAt(point)) motion_.grab(region->id, point.y, now);
  requestFrame();
}

void HostingController::touchMoved(Point point, Clock::time_point now) {
  if (!isDragging_ && std::hypot(point.x - touchStart_.x, point.y - touchStart_.y) > touchSlop) {
    isDragging_ = true;
    pressed_.reset();
    motion_.drag(point.y, now);  // the movement that turns a tap into a drag does not scroll
    requestFrame();
    return;
  }
  if (isDragging_ && motion_.region()) scrollBy(*motion_.region(), motion_.drag(point.y, now));
}

void HostingController::touchEnded(Point point, Clock::time_point now) {
  touchMoved(point, now);  // the host may have reported no movement
  const auto tapped = std::exchange(pressed_, std::nullopt);
  if (isDragging_) {
    motion_.release(now);
  } else {
    motion_.stop();
  }
  isDragging_ = false;
  requestFrame();
  if (!tapped) return;
  focused_ = tapped;
  activate(*tapped);
}

void HostingController::touchCancelled() {
  pressed_.reset();
  isDragging_ = false;
  motion_.stop();
  requestFrame();
}

void HostingController::scroll(Point point, double distance) {
  update();
  motion_.stop();
  if (const ScrollRegion* region = regionAt(point)) scrollBy(region->id, distance);
}

bool HostingController::press(Key key) {
  update();
  const auto& regions = layout_.scrollRegions();
  const auto scrollFirst = [&](double distance) {
    return !regions.empty() && scrollBy(regions.front().id, distance);
  };
  const double page = regions.empty() ? 0 : regions.front().frame.height * 0.9;
  switch (key) {
    case Key::tab:
      moveFocus(1);
      return true;
    case Key::backtab:
      moveFocus(-1);
      return true;
    case Key::space:
    case Key::enter:
      return activateFocused() || scrollFirst(page);
    case Key::escape: {
      const auto& elements = accessibleElements();
      const auto dismissal = std::ranges::find_if(elements, &AccessibleElement::isDismissal);
      return dismissal != elements.end() && activate(dismissal->id);
    }
    case Key::up:
      return moveFocus(&Rect::y, &Rect::height, -1);
    case Key::down:
      return moveFocus(&Rect::y, &Rect::height, 1);
    case Key::left:
      return moveFocus(&Rect::x, &Rect::width, -1);
    case Key::right:
      return moveFocus(&Rect::x, &Rect::width, 1);
    case Key::pageUp:
      return scrollFirst(-page);
    case Key::pageDown:
      return scrollFirst(page);
    case Key::home:
      return scrollFirst(-infinity);
    case Key::end:
      return scrollFirst(infinity);
  }
  return false;
}

void HostingController::reveal(const AccessibleElement& element) {
  if (!element.clip) return;
  const Rect clip = *element.clip;
  const Rect frame = element.frame;
  const ScrollRegion* region = regionAt(clip.center());
  if (!region) return;
  const double above = frame.y - clip.y - ScrollRegion::fadedEdge;
  // Shows the beginning of the next row, too, so that the content does not seem to end here.
  const double next = 16 * std::max(1.0, environment_.textScale);
  const double below = frame.bottom() - clip.bottom() + ScrollRegion::fadedEdge + next;
  scrollBy(region->id, std::min(above, std::max(0.0, below)));
  scrollOffset(region->id).revealed = element.id;
}

std::optional<ElementId> HostingController::focused() {
  update();
  return focused_;
}

void HostingController::focus(ElementId element) {
  focused_ = element;
  // Twice, because rows that are measured on the way may turn out taller or shorter than estimated.
  for (int i = 0; i < 2; ++i) {
    if (const AccessibleElement* found = findElement(element)) reveal(*found);
  }
  requestFrame();
}

// Returns whether the offset changed. If it did not, a fling ends.
bool HostingController::applyScroll(ElementId region, double distance) {
  const auto& regions = layout_.scrollRegions();
  const auto scrolled = std::ranges::find(regions, region, &ScrollRegion::id);
  const double maxOffset = scrolled == regions.end() ? 0 : scrolled->maxOffset();
  ScrollOffset& offset = scrollOffset(region);
  const double from = std::min(offset.y, maxOffset);
  const double target = std::clamp(from + distance, 0.0, maxOffset);
  if (target == from) {
    if (motion_.isFlinging()) motion_.stop();
    return false;
  }
  if (offset.growth > 0) forgetSizes(*scrolled->element);
  offset.revealed.reset();
  offset.y = from;
  offset.moveUp(target - from);
  if (target == maxOffset) offset.y = infinity;  // stays at the end, however tall unmeasured rows turn out
  layoutIsStale_ = true;
  return true;
}

bool HostingController::scrollBy(ElementId region, double distance) {
  if (!applyScroll(region, distance)) return false;
  hasScrolled_ = true;
  requestFrame();
  return true;
}

ScrollOffset& HostingController::scrollOffset(ElementId region) {
  return tree_.memory().get<ScrollOffset>(region, [] { return ScrollOffset(); });
}

// Returns the region that a finger or a wheel at `point` scrolls: also what lies between parts that stay, if
// the point is on one of these.
const ScrollRegion* HostingController::regionAt(Point point) const {
  for (const ScrollRegion& region : std::views::reverse(layout_.scrollRegions())) {
    if (region.element->frame.contains(point)) return &region;
  }
  return nullptr;
}

// Moves the focus through the controls in reading order and wraps around. The focus starts at the title,
// which is not a control, so that one key press cannot make a decision on a banner that has just appeared.
void HostingController::moveFocus(int step) {
  const auto& elements = accessibleElements();
  const auto isStop = [](const AccessibleElement& each) { return each.isControl() && each.isEnabled; };
  const auto count = static_cast<std::ptrdiff_t>(elements.size());
  const auto current =
      focused_ ? std::ranges::find(elements, *focused_, &AccessibleElement::id) : elements.end();
  std::ptrdiff_t index = current == elements.end() ? (step > 0 ? -1 : count) : current - elements.begin();
  for (std::ptrdiff_t tries = 0; tries < count; ++tries) {
    index = (index + step + count) % count;
    if (isStop(elements[static_cast<std::size_t>(index)])) {
      focusIsVisible_ = true;
      return focus(elements[static_cast<std::size_t>(index)].id);
    }
  }
}

// Keeps the focus on an element that is shown: on one that asks for it, or else on the focused one. If that
// is gone, a screen that was shown before gets its focus back and has its lower edge settled, and any other
// screen has the focus on its title.
void HostingController::settleFocus() {
  for (const AccessibleElement& each : accessible_) {
    if (each.focusRequests <= focusRequests_) continue;
    focusRequests_ = each.focusRequests;
    focused_ = each.id;
    reveal(each);
  }
  const auto isShown = [&] {
    return focused_ && std::ranges::find(accessible_, *focused_, &AccessibleElement::id) != accessible_.end();
  };
  if (isShown()) return;
  std::swap(focused_, focusedBefore_);
  if (isShown()) {  // the user may have left before scrolling ended
    layout_.settle();
    layoutIsStale_ = true;
    return;
  }
  const auto title = std::ranges::find(accessible_, Role::heading, &AccessibleElement::role);
  focused_ = title == accessible_.end() ? std::nullopt : std::optional(title->id);
}

}  // namespace view
}  // namespace TalvoConsentSDK
