#pragma once

// The Qt window behind an OverlayWindow.

#include <QPointer>
#include <QRegion>
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
/// Without its host it is never seen.
class OverlaySurface : public ViewWindow {
 public:
  OverlaySurface(QWindow* host, const QtOptions& options, OverlayKind kind = overlayKind());
  ~OverlaySurface() override;

  /// Whether a window is one of these.
  static bool isOverlay(const QWindow& window);

  /// Shows it over its host, now or once that is on screen itself, and whenever the host comes back.
  void present();

  void conceal();

  void setAlpha(double alpha);
  void animateAlpha(double alpha, std::chrono::milliseconds duration, std::function<void()> completion);

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  bool passOn(QEvent& event) override;
  platform::Insets safeArea() const override;
  bool frameDrawn(view::HostingController::Clock::time_point now,
                  const std::vector<view::Visual>& visuals) override;
  void hideEvent(QHideEvent* event) override;

 private:
  using Clock = view::HostingController::Clock;

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

  void appear();
  void follow();
  void takeHostPicture();
  QRegion visibleRegion(const std::vector<view::Visual>& visuals) const;
  bool stepFade(Clock::time_point now);
  double alphaAt(Clock::time_point now) const;

  const QPointer<QWindow> host_;
  const QtOptions options_;
  const OverlayKind kind_;
  QPointer<QQuickItem> hostPicture_;
  QTimer hostIsRedrawn_;
  bool isWanted_ = false;
  bool coversHost_ = false;  // a backdrop keeps everything else of the host out of reach
  Fade fade_;
  std::vector<Completion> completions_;
};

}  // namespace TalvoConsentSDK
