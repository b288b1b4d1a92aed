#include "adapters/qt/OverlayWindow.h"

#include <QGuiApplication>
#include <QStyleHints>
#include <utility>

#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
#include <QAccessibilityHints>
#endif

#include "adapters/qt/NinePatch.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

bool asksForHighContrast() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
  const QAccessibilityHints* const hints = QGuiApplication::styleHints()->accessibility();
  return hints && hints->contrastPreference() == Qt::ContrastPreference::HighContrast;
#else
  return false;
#endif
}

}  // namespace

OverlayWindow::OverlayWindow(QWindow* host, const QtOptions& options,
                             std::shared_ptr<ImageLoader> imageLoader, OverlayKind kind)
    : surface_(new OverlaySurface(host, options, kind)),
      options_(options),
      imageLoader_(std::move(imageLoader)) {}

OverlayWindow::~OverlayWindow() {
  if (!surface_) return;
  surface_->conceal();
  surface_->deleteAfterHandlers();
}

void OverlayWindow::setRootViewController(std::shared_ptr<RootViewController> controller) {
  ViewEnvironment environment;
  environment.textMeasurer = std::make_shared<QtTextMeasurer>(options_.text);
  environment.textScale = options_.text.scale;
  environment.imageLoader = imageLoader_;
  environment.reducesMotion = options_.reducesMotion;
  environment.highContrast = options_.highContrast.value_or(asksForHighContrast());
  if (surface_) surface_->setController(HostingController::of(controller), std::move(environment));
}

void OverlayWindow::setBackgroundColor(Color color) {
  if (surface_) surface_->setColor(toQColor(color));
}

void OverlayWindow::makeKeyAndVisible() {
  setHidden(false);
}

void OverlayWindow::setAlpha(double alpha) {
  if (surface_) surface_->setAlpha(alpha);
}

void OverlayWindow::setHidden(bool hidden) {
  if (!surface_) return;
  if (hidden) {
    surface_->conceal();
  } else {
    surface_->present();
  }
}

void OverlayWindow::animateAlpha(double alpha, std::chrono::milliseconds duration,
                                 std::function<void()> completion) {
  if (!surface_) return completion();
  surface_->animateAlpha(alpha, duration, std::move(completion));
}

}  // namespace TalvoConsentSDK
