#include "adapters/qt/OverlayWindow.h"

#include <utility>

#include "adapters/qt/NinePatch.h"

namespace TalvoConsentSDK {

namespace {

// The surface may be in one of its own event handlers, and its last frame on its way to the screen.
void deleteLater(OverlaySurface* surface) {
  surface->hide();
  surface->deleteLater();
}

}  // namespace

OverlayWindow::OverlayWindow(QWindow* host, const QtOptions& options,
                             std::shared_ptr<ImageLoader> imageLoader)
    : surface_(new OverlaySurface(host, options), &deleteLater),
      options_(options),
      imageLoader_(std::move(imageLoader)) {}

OverlayWindow::~OverlayWindow() = default;

void OverlayWindow::setRootViewController(std::shared_ptr<HostingController> controller) {
  ViewEnvironment environment;
  environment.textMeasurer = std::make_shared<QtTextMeasurer>(options_.text);
  environment.textScale = options_.text.scale;
  environment.imageLoader = imageLoader_;
  environment.safeArea = surface_->safeArea();
  environment.reducesMotion = options_.reducesMotion;
  surface_->setController(std::move(controller), std::move(environment));
}

void OverlayWindow::setBackgroundColor(Color color) {
  surface_->setColor(toQColor(color));
}

void OverlayWindow::makeKeyAndVisible() {
  surface_->present();
}

void OverlayWindow::setAlpha(double alpha) {
  surface_->setAlpha(alpha);
}

void OverlayWindow::setHidden(bool hidden) {
  if (hidden) {
    surface_->hide();
  } else {
    surface_->present();
  }
}

void OverlayWindow::animateAlpha(double alpha, std::chrono::milliseconds duration,
                                 std::function<void()> completion) {
  surface_->animateAlpha(alpha, duration, std::move(completion));
}

}  // namespace TalvoConsentSDK
