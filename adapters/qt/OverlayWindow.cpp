#include "adapters/qt/OverlayWindow.h"

#include <QGuiApplication>
#include <QStyleHints>
#include <utility>

#if QT_VERSION >= QT_VERSION_CHECK(6, 10, 0)
#include <QAccessibilityHints>
#endif

#include "adapters/qt/NinePatch.h"
#include "adapters/qt/QtText.h"

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

// The options of the host come before the system's settings.
ViewEnvironment environmentFor(const QtOptions& options, const std::shared_ptr<ImageLoader>& imageLoader) {
  const DisplayPreferences system =
      options.systemSettings ? options.systemSettings->preferences() : DisplayPreferences();
  ViewEnvironment environment;
  environment.textScale = options.textScale.value_or(system.textScale.value_or(1));
  environment.textMeasurer = std::make_shared<QtTextMeasurer>(TextSettings{environment.textScale});
  environment.imageLoader = imageLoader;
  environment.reducesMotion = options.reducesMotion.value_or(system.reducesMotion.value_or(false));
  environment.highContrast =
      options.highContrast.value_or(system.highContrast.value_or(asksForHighContrast()));
  return environment;
}

}  // namespace

OverlayWindow::OverlayWindow(QWindow* host, const QtOptions& options,
                             std::shared_ptr<ImageLoader> imageLoader, OverlayKind kind)
    : surface_(new OverlaySurface(host, options, kind)),
      options_(options),
      imageLoader_(std::move(imageLoader)) {
  if (!options_.systemSettings) return;
  QObject::connect(options_.systemSettings.get(), &SystemSettings::changed, surface_,
                   [surface = surface_.data(), options = options_, loader = imageLoader_] {
                     surface->setEnvironment(environmentFor(options, loader));
                   });
}

OverlayWindow::~OverlayWindow() {
  if (!surface_) return;
  surface_->conceal();
  surface_->deleteAfterHandlers();
}

void OverlayWindow::setRootViewController(std::shared_ptr<RootViewController> controller) {
  if (surface_)
    surface_->setController(HostingController::of(controller), environmentFor(options_, imageLoader_));
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
