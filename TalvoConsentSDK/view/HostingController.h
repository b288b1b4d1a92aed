#pragma once

// Runs a view in a window: renders it, lays it out, and handles touches and keys. Knows neither the window
// nor a toolkit: the window provides the size, the time and the input, and draws the visuals that `frame`
// returns.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Window.h"
#include "TalvoConsentSDK/view/Accessible.h"
#include "TalvoConsentSDK/view/Animations.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/Layout.h"
#include "TalvoConsentSDK/view/ScrollMotion.h"
#include "TalvoConsentSDK/view/ViewEnvironment.h"
#include "TalvoConsentSDK/view/Visual.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

/// The keys that a banner responds to. `enter` is also the key of a remote that selects, and `escape` the one
/// that leads back.
enum class Key { tab, backtab, space, enter, escape, up, down, left, right, pageUp, pageDown, home, end };

/// One root view and its state. Main thread only.
class HostingController : public RootViewController {
 public:
  using Clock = std::chrono::steady_clock;

  explicit HostingController(AnyView rootView, LayoutDirection direction = LayoutDirection::leftToRight);

  /// Casts the root controller that a window was given, which must be a HostingController. Null stays null.
  static std::shared_ptr<HostingController> of(const std::shared_ptr<RootViewController>& controller) {
    return std::static_pointer_cast<HostingController>(controller);
  }

  /// The colour that a window paints behind the view, if it paints a background at all. The presenter sets it
  /// to clear, so that the host shows through.
  void setBackgroundColor(Color color) { backgroundColor_ = color; }
  Color backgroundColor() const { return backgroundColor_; }

  /// Sets the window's size, metrics and settings. Call this before using anything below.
  void setEnvironment(ViewEnvironment environment);
  const ViewEnvironment& environment() const { return environment_; }

  /// `needsFrame` is called when the last frame is out of date. The window then calls `frame` again.
  void setOnNeedsFrame(std::function<void()> needsFrame) { needsFrame_ = std::move(needsFrame); }

  /// `windowLost` is called by `loseWindow`.
  void setOnWindowLost(std::function<void()> windowLost) { windowLost_ = std::move(windowLost); }

  /// A window calls this once if it can show nothing any more, because the host destroyed what it lies on.
  /// The caller keeps the controller alive during the call, which may release the window's own reference.
  void loseWindow() const {
    if (windowLost_) windowLost_();
  }

  /// Returns what to draw now. Valid until the next call.
  const std::vector<Visual>& frame(Clock::time_point now);

  /// Whether another frame is due, because something was still moving in the last one or the lower edge of
  /// what was scrolled has not settled yet.
  bool isMoving() const { return settlesSoon() || !isStill(); }

  /// Whether nothing was moving in the last frame. The lower edge may be about to settle.
  bool isStill() const { return !animations_.isMoving() && !layout_.isMoving() && !motion_.isFlinging(); }

  /// Whether a touch at `point` belongs to the banner rather than to the host.
  bool covers(Point point);

  /// Input from one finger or the mouse's main button.
  void touchBegan(Point point, Clock::time_point now);
  void touchMoved(Point point, Clock::time_point now);
  void touchEnded(Point point, Clock::time_point now);
  void touchCancelled();

  /// Scrolls the part under `point` by `distance` points, as a wheel or a trackpad does.
  void scroll(Point point, double distance);

  /// Handles a key. Returns false if the key is for the host.
  bool press(Key key);

  /// Returns everything that the user can read or operate. `Rows::all` includes rows that are far out of
  /// sight; the first such call after a change takes time in proportion to their number. Valid until the next
  /// change or the next such call, which `activate` and `focus` may make too.
  const std::vector<AccessibleElement>& accessibleElements(Layout::Rows rows = Layout::Rows::nearby);

  /// Returns a number that grows whenever the accessible elements may have changed.
  std::uint64_t accessibleRevision();

  /// Activates a control as a tap does, even if it is out of sight. Returns false if there is no such control
  /// or it is disabled.
  bool activate(ElementId control);

  /// Scrolls an element into view. The element may come from `accessibleElements` with `Rows::nearby` or with
  /// `Rows::all`.
  void reveal(const AccessibleElement& element);

  std::optional<ElementId> focused();
  void focus(ElementId element);

 private:
  void update();
  std::vector<ElementId> keptElements() const;
  void loadImages(Element& element);
  void requestFrame();
  bool applyScroll(ElementId region, double distance);
  bool scrollBy(ElementId region, double distance);
  bool settlesSoon() const { return (hasScrolled_ || settleTime_) && !isDragging_; }
  ScrollOffset& scrollOffset(ElementId region);
  const ScrollRegion* regionAt(Point point) const;
  const AccessibleElement* findElement(ElementId id);
  void moveFocus(int step);
  bool moveFocus(double Rect::* start, double Rect::* length, int step);
  bool activateFocused();
  const AccessibleElement* focusedElement();
  void settleFocus();

  const AnyView rootView_;
  const LayoutDirection direction_;
  Color backgroundColor_;
  ViewEnvironment environment_;
  std::function<void()> needsFrame_;
  std::function<void()> windowLost_;
  ElementTree tree_;
  Animations animations_;
  Layout layout_;
  ScrollMotion motion_;
  std::vector<Visual> visuals_;
  std::vector<AccessibleElement> accessible_;
  std::optional<std::vector<AccessibleElement>> allAccessible_;  // absent while out of date
  std::uint64_t accessibleRevision_ = 0;
  bool renderIsStale_ = true;
  bool layoutIsStale_ = true;
  bool sizesAreStale_ = false;
  bool isUpdating_ = false;

  std::optional<ElementId> pressed_;
  Point touchStart_;
  bool isDragging_ = false;
  bool hasScrolled_ = false;                     // since the last frame
  std::optional<Clock::time_point> settleTime_;  // when the lower edge settles after scrolling
  std::optional<ElementId> focused_;
  std::optional<ElementId> focusedBefore_;  // on the screen before this one
  int focusRequests_ = 0;                   // how many were granted
  bool focusIsVisible_ = false;

  // Only the controller owns this. Requests for pictures hold a weak_ptr to it, so a picture that arrives
  // after the controller is gone is ignored.
  const std::shared_ptr<HostingController*> self_ = std::make_shared<HostingController*>(this);
};

}  // namespace view
}  // namespace TalvoConsentSDK
