#pragma once

// A Qt window that runs a HostingController: paints its visuals and passes it the user's input.

#include <QPointer>
#include <QQuickWindow>
#include <QTimer>
#include <memory>
#include <optional>
#include <vector>

#include "TalvoConsentSDK/view/HostingController.h"

#include "adapters/qt/AccessibleTree.h"
#include "adapters/qt/VisualMount.h"

namespace TalvoConsentSDK {

/// Use it on the GUI thread. Draws a frame after each change, and one after another while something moves.
class ViewWindow : public QQuickWindow {
 public:
  ViewWindow();
  ~ViewWindow() override;

  /// Sets the controller to show. Its environment is `environment` with the window's own size and safe area.
  void setController(std::shared_ptr<view::HostingController> controller, view::ViewEnvironment environment);

  /// Changes the environment, except for the size and the safe area, which are the window's own.
  void setEnvironment(view::ViewEnvironment environment);

  const std::shared_ptr<view::HostingController>& controller() const { return controller_; }

  /// The parent of all items that show the controller's visuals.
  QQuickItem& stage() { return stage_; }

  /// Create one in each handler of the window: deleteAfterHandlers deletes the window only once none exists,
  /// because a handler may call code that runs an event loop.
  class HandlerScope {
   public:
    explicit HandlerScope(ViewWindow& window) : window_(&window) { ++window_->runningHandlers_; }
    HandlerScope(const HandlerScope&) = delete;
    HandlerScope& operator=(const HandlerScope&) = delete;
    ~HandlerScope() {
      if (window_ && --window_->runningHandlers_ == 0 && window_->isDeletionPending_) window_->deleteLater();
    }

   private:
    const QPointer<ViewWindow> window_;  // null if the host destroyed the window
  };

  /// Deletes the window as soon as none of its handlers runs.
  void deleteAfterHandlers();

  /// Draws a frame as soon as possible.
  void scheduleFrame();

  /// Whether a frame is due.
  bool isBusy() const { return timer_.isActive(); }

  QAccessibleInterface* accessibleRoot() const override { return accessible_.root(); }

 protected:
  bool event(QEvent* event) override;

  /// Called with input that the view does not handle. Returns false if it is not handled elsewhere either.
  virtual bool passOn(QEvent&) { return true; }

  /// The parts of the window that the system's own bars and notches cover. Called by setController, and after
  /// each change of the window's size.
  virtual platform::SafeArea safeArea() const { return environment_.safeArea; }

  /// Called after every frame with its visuals. Returns whether to draw another frame.
  virtual bool frameDrawn(view::HostingController::Clock::time_point, const std::vector<view::Visual>&) {
    return false;
  }

 private:
  void drawFrame();
  void resized();
  void touch(QTouchEvent& event);
  void mouse(QMouseEvent& event);
  void wheel(QWheelEvent& event);

  QQuickItem stage_;
  VisualMount mount_;
  QTimer timer_;
  std::shared_ptr<view::HostingController> controller_;
  view::ViewEnvironment environment_;
  std::optional<int> finger_;  // the touch point that the view follows; it ignores others
  int runningHandlers_ = 0;
  bool isDeletionPending_ = false;
  bool isPassingOn_ = false;  // true from a press outside the view until its release
  AccessibleTree accessible_;
};

}  // namespace TalvoConsentSDK
