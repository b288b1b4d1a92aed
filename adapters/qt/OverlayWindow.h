#pragma once

// The banner's window over a host's window.

#include <memory>

#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/platform/Window.h"

#include "adapters/qt/OverlaySurface.h"

namespace TalvoConsentSDK {

/// Implements Window with an OverlaySurface. It owns the surface, but the host may destroy the surface first.
/// After that, calls do nothing, except that animateAlpha calls its completion.
class OverlayWindow : public platform::Window {
 public:
  OverlayWindow(QWindow* host, const QtOptions& options, std::shared_ptr<platform::ImageLoader> imageLoader,
                OverlayKind kind = overlayKind());
  ~OverlayWindow() override;

  void setRootViewController(std::shared_ptr<platform::RootViewController> controller) override;
  void setWindowLevel(platform::WindowLevel) override {}  // ignored: it always lies directly above its host
  void setBackgroundColor(platform::Color color) override;
  void makeKeyAndVisible() override;
  void setAlpha(double alpha) override;
  void setHidden(bool hidden) override;
  void animateAlpha(double alpha, std::chrono::milliseconds duration,
                    std::function<void()> completion) override;

 private:
  const QPointer<OverlaySurface> surface_;
  const QtOptions options_;
  const std::shared_ptr<platform::ImageLoader> imageLoader_;
};

}  // namespace TalvoConsentSDK
