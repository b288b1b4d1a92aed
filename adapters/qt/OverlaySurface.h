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

/// Covers its host exactly, follows it, and fades by elapsed time, not by frames. On Wayland it is a child of
/// the host, because an application can only position child windows there. On other platforms it is
/// translucent if the window system can blend windows; if not, it is opaque and draws a picture of the host
/// below the banner. Input that the banner does not handle goes to the host, unless a backdrop covers the
/// host. Never visible without its host.
class OverlaySurface : public ViewWindow {
 public:
  OverlaySurface(QWindow* host, const QtOptions& options, OverlayKind kind = overlayKind());
  ~OverlaySurface() override;

  /// Whether a window is an OverlaySurface.
  static bool isOverlay(const QWindow& window);

  /// Shows it over its host as soon as the host is on screen, and again whenever the host reappears.
  void present();

  void conceal();

  void setAlpha(double alpha);
  void animateAlpha(double alpha, std::chrono::milliseconds duration, std::function<void()> completion);

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  bool passOn(QEvent& event) override;
  platform::SafeArea safeArea() const override;
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
  void followHost();
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
  bool coversHost_ = false;  // whether a backdrop keeps all input from the host
  Fade fade_;
  std::vector<Completion> completions_;
};

}  // namespace TalvoConsentSDK
