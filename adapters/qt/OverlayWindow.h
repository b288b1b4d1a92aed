#pragma once

// The banner's window over a host's window.

#include <memory>

#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/platform/Window.h"

#include "adapters/qt/OverlaySurface.h"

namespace TalvoConsentSDK {

/// The window seam on an OverlaySurface, which it owns, and which may go before it with the host.
class OverlayWindow : public platform::Window {
 public:
  OverlayWindow(QWindow* host, const QtOptions& options, std::shared_ptr<platform::ImageLoader> imageLoader,
                OverlayKind kind = overlayKind());
  ~OverlayWindow() override;

  void setRootViewController(std::shared_ptr<platform::RootViewController> controller) override;
  void setWindowLevel(platform::WindowLevel) override {}  // it lies on its host, above which only alerts are
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
