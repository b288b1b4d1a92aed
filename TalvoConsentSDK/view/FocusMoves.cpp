// How the arrow keys of a keyboard, a remote or a game controller move the focus of a HostingController.

#include <algorithm>
#include <cmath>

#include "TalvoConsentSDK/view/HostingController.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

constexpr double overlap = 1;     // points by which neighbours may overlap
constexpr double afterAll = 1e6;  // points; farther than anything in a window

bool isOutOfSight(const AccessibleElement& element) {
  return element.clip && !element.frame.intersects(*element.clip);
}

// A move from the rectangle `from`: to the right or downwards if `step` is 1, to the left or upwards if it is
// -1. `start` and `length` are those of a rectangle along the move.
struct Move {
  Rect from;
  bool isInScrolledPart;
  int step;
  double Rect::* start;
  double Rect::* length;

  double distance(const Rect& to) const {
    return step > 0 ? to.*start - from.*start - from.*length : from.*start - to.*start - to.*length;
  }
};

// Returns the control that the move reaches first or, if `line` is given, the one beside that line whose
// middle is nearest to the middle of `from`. Within a scrolled part, its own controls come first, wherever
// they are scrolled. From outside, only what can be seen counts.
const AccessibleElement* nearest(const std::vector<AccessibleElement>& elements, const Move& move,
                                 const AccessibleElement* line) {
  const bool isHorizontal = move.start == &Rect::x;
  const Rect beside = line ? line->control->frame : move.from;
  const AccessibleElement* found = nullptr;
  double shortest = infinity;
  for (const AccessibleElement& each : elements) {
    if (!each.isControl() || !each.isEnabled) continue;
    Rect frame = each.control->frame;
    if (each.clip && !move.isInScrolledPart) frame = frame.intersection(*each.clip);
    double distance = move.distance(frame);
    const bool isBeside = frame.y < beside.bottom() && beside.y < frame.bottom();
    if (frame.height <= 0 || distance <= -overlap || ((line || isHorizontal) && !isBeside)) continue;
    if (line) distance = std::abs(frame.center().x - move.from.center().x);
    if (move.isInScrolledPart && !each.clip) distance += afterAll;
    if (distance < shortest) {
      found = &each;
      shortest = distance;
    }
  }
  return found;
}

}  // namespace

// Left and right stay in the line of the focused element. Up and down go to the next line of controls, and
// there to the one above or below. If that line is far out of sight, or if the move leaves or crosses a part
// that can be scrolled, that part is scrolled first, so that long texts can be read. Returns false if there
// is nothing in this direction.
bool HostingController::moveFocus(double Rect::* start, double Rect::* length, int step) {
  Move move{{0, 0, environment_.size.width, environment_.size.height}, false, step, start, length};
  if (const AccessibleElement* current = focusedElement()) {
    move.from = current->control ? current->control->frame : current->frame;
    move.isInScrolledPart = current->clip.has_value();
    if (isOutOfSight(*current)) {  // what the user sees begins at the edge where the element left
      move.from.y = move.from.y < current->clip->y ? current->clip->y : current->clip->bottom();
      move.from.height = 0;
    }
  } else {
    move.from.*start -= step * move.from.*length;  // enters the window at its edge
  }
  const AccessibleElement* next = nearest(accessible_, move, nullptr);
  if (start == &Rect::y) {
    if (next) next = nearest(accessible_, move, next);
    const auto& regions = layout_.scrollRegions();
    if (!regions.empty()) {
      const Rect& view = regions.front().frame;
      const double reach = view.height / 3;
      const auto isAfter = [step](const Rect& a, const Rect& b) {
        return (a.center().y - b.center().y) * step > 0;
      };
      const bool crosses = isAfter(view, move.from) && (!next || isAfter(next->frame, view));
      const bool isNear =
          next && next->clip && Move{view, true, step, start, length}.distance(next->control->frame) < reach;
      if (!isNear && (move.isInScrolledPart || crosses) && scrollBy(regions.front().id, step * reach))
        return focusIsVisible_ = true;
    }
  }
  if (!next) return false;
  focusIsVisible_ = true;
  focus(next->id);
  return true;
}

// Does not activate what the user does not see.
bool HostingController::activateFocused() {
  const AccessibleElement* current = focusedElement();
  return current && !isOutOfSight(*current) && activate(current->id);
}

const AccessibleElement* HostingController::focusedElement() {
  return focused_ ? findElement(*focused_) : nullptr;
}

}  // namespace view
}  // namespace TalvoConsentSDK
