#pragma once

// A Qt window that shows a HostingController: paints what it answers, and hands it what the person does.

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

/// Runs on the GUI thread. Frames are drawn when something has changed, and one after another while something
/// moves.
class ViewWindow : public QQuickWindow {
 public:
  explicit ViewWindow(const TextSettings& settings);
  ~ViewWindow() override;

  /// Shows a controller from now on. Its environment follows the window's size; the rest of it is
  /// `environment`.
  void setController(std::shared_ptr<view::HostingController> controller, view::ViewEnvironment environment);
  const std::shared_ptr<view::HostingController>& controller() const { return controller_; }

  /// The item that everything of the controller's lies in.
  QQuickItem& stage() { return stage_; }

  /// While there is one, the window is in a handler of its own. Whatever that calls may run an event loop.
  class Use {
   public:
    explicit Use(ViewWindow& window) : window_(&window) { ++window_->uses_; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() {
      if (window_ && --window_->uses_ == 0 && window_->isDoomed_) window_->deleteLater();
    }

   private:
    const QPointer<ViewWindow> window_;  // it may go with its host
  };

  /// Deletes the window once it is in none of its handlers.
  void deleteWhenUnused();

  /// Draws a frame as soon as possible.
  void scheduleFrame();

  /// Whether a frame is due.
  bool isBusy() const { return timer_.isActive(); }

  QAccessibleInterface* accessibleRoot() const override { return accessible_.root(); }

 protected:
  bool event(QEvent* event) override;

  /// Receives input that the view has no use for; false when nobody else has either.
  virtual bool passOn(QEvent&) { return true; }

  /// What the system's furniture covers of the window now; asked whenever the window's size changes.
  virtual platform::Insets safeArea() const { return environment_.safeArea; }

  /// Called after every frame with what it shows; frames go on as long as it returns true.
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
  std::optional<int> finger_;  // the one touch point that counts
  int uses_ = 0;
  bool isDoomed_ = false;
  bool isPassingOn_ = false;  // from a press that is not the view's to its release
  AccessibleTree accessible_;
};

}  // namespace TalvoConsentSDK
