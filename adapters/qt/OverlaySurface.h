#pragma once

// The Qt window behind an OverlayWindow.

#include <QPointer>
#include <chrono>
#include <functional>
#include <vector>

#include "adapters/qt/QtOptions.h"
#include "adapters/qt/Translucency.h"
#include "adapters/qt/ViewWindow.h"

namespace TalvoConsentSDK {

/// Lies on its host exactly, follows it, and fades by a clock. Where the window system can blend windows it
/// is translucent; on Wayland it is a child of the host, since only those can be placed; elsewhere it is
/// opaque and draws a picture of the host below the banner. Touches that are not the banner's go to the host.
class OverlaySurface : public ViewWindow {
 public:
  OverlaySurface(QWindow* host, const QtOptions& options);

  /// Whether a window is one of these.
  static bool isOverlay(const QWindow& window);

  Insets safeArea() const;

  /// Shows it over its host, once that is on screen itself.
  void present();

  void setAlpha(double alpha);
  void animateAlpha(double alpha, std::chrono::milliseconds duration, std::function<void()> completion);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void passOn(QEvent& event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  using Clock = HostingController::Clock;

  struct Fade {
    double from = 1;
    double to = 1;
    Clock::time_point start;
    std::chrono::milliseconds duration{0};
  };
  struct Completion {
    Clock::time_point due;
    std::function<void()> call;
  };

  void follow();
  void takeHostPicture();
  void maskToContent();
  bool stepFade(Clock::time_point now);
  double alphaAt(Clock::time_point now) const;

  const QPointer<QWindow> host_;
  const QtOptions options_;
  const OverlayKind kind_;
  QPointer<QQuickItem> hostPicture_;
  bool isAwaitingHost_ = false;
  Fade fade_;
  std::vector<Completion> completions_;
};

}  // namespace TalvoConsentSDK
