#pragma once

// Runs a view in a window: renders, lays out, and turns touches and keys into what the view is to do. It
// knows neither the window nor a toolkit; a window gives it room, time and input, and draws the visuals it
// answers.

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

/// The keys that a banner answers to.
enum class Key { tab, backtab, space, enter, escape, up, down, pageUp, pageDown, home, end };

/// One root view and its state. Main thread only.
class HostingController : public RootViewController {
 public:
  using Clock = std::chrono::steady_clock;

  explicit HostingController(AnyView rootView, LayoutDirection direction = LayoutDirection::leftToRight);

  /// The controller that a window was given. Null stays null.
  static std::shared_ptr<HostingController> of(const std::shared_ptr<RootViewController>& controller) {
    return std::static_pointer_cast<HostingController>(controller);
  }

  /// What lies behind the view; clear lets the host be seen.
  void setBackgroundColor(Color color) { backgroundColor_ = color; }
  Color backgroundColor() const { return backgroundColor_; }

  /// The window's size, metrics and settings. Must be set before anything below is used.
  void setEnvironment(ViewEnvironment environment);
  const ViewEnvironment& environment() const { return environment_; }

  /// `needsFrame` is called when what is shown is out of date; the window then asks for a frame.
  void setOnNeedsFrame(std::function<void()> needsFrame) { needsFrame_ = std::move(needsFrame); }

  /// What to draw now. Valid until the next call.
  const std::vector<Visual>& frame(Clock::time_point now);

  /// Whether the last frame was one of a movement, so that another is due.
  bool isMoving() const { return animations_.isMoving() || motion_.isFlinging(); }

  /// Whether a touch at `point` is the banner's; else it is the host's.
  bool covers(Point point);

  /// One finger, or the mouse's main button.
  void touchBegan(Point point, Clock::time_point now);
  void touchMoved(Point point, Clock::time_point now);
  void touchEnded(Point point, Clock::time_point now);
  void touchCancelled();

  /// Scrolls what lies under `point` by a wheel or a trackpad.
  void scroll(Point point, double distance);

  /// Answers to a key; false leaves it to the host.
  bool press(Key key);

  /// Everything there is to read and use. `all` includes rows that are far out of sight, which takes time in
  /// proportion to their number the first time after a change. Valid until the next change.
  const std::vector<AccessibleElement>& accessibleElements(bool all = false);

  /// Tells lists apart: while it is the same, so are the elements. It only grows.
  std::uint64_t accessibleRevision();

  /// Uses a control as a tap would, in sight or not; false when there is none such that is enabled.
  bool activate(ElementId control);

  /// Scrolls an element into view; it may be one of a list of all.
  void reveal(const AccessibleElement& element);

  std::optional<ElementId> focused();
  void focus(ElementId element);

 private:
  void update();
  std::vector<ElementId> keptElements() const;
  void loadImages(Element& element);
  void requestFrame();
  bool applyScroll(ElementId region, double distance);
  void scrollBy(ElementId region, double distance);
  const ScrollRegion* regionAt(Point point) const;
  const AccessibleElement* find(ElementId id);
  void moveFocus(int step);
  void settleFocus();

  const AnyView rootView_;
  const LayoutDirection direction_;
  Color backgroundColor_;
  ViewEnvironment environment_;
  std::function<void()> needsFrame_;
  ElementTree tree_;
  Layout layout_;
  Animations animations_;
  ScrollMotion motion_;
  std::vector<Visual> visuals_;
  std::vector<AccessibleElement> accessible_;
  std::optional<std::vector<AccessibleElement>> allAccessible_;  // absent: out of date
  std::uint64_t accessibleRevision_ = 0;
  bool renderIsStale_ = true;
  bool layoutIsStale_ = true;
  bool sizesAreStale_ = false;
  bool isUpdating_ = false;

  std::optional<ElementId> pressed_;
  Point touchStart_;
  bool isDragging_ = false;
  std::optional<ElementId> focused_;
  bool focusIsVisible_ = false;

  // Outlives nothing: a picture that arrives when the controller is gone finds this expired.
  const std::shared_ptr<HostingController*> self_ = std::make_shared<HostingController*>(this);
};

}  // namespace view
}  // namespace TalvoConsentSDK
