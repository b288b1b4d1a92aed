#include "adapters/qt/QtApplication.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QPointer>
#include <QUrl>
#include <QWindow>
#include <algorithm>
#include <utility>

#include "adapters/qt/OverlayWindow.h"
#include "adapters/qt/PortalSettings.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

class QtScene : public Scene {
 public:
  QtScene(QWindow& host, const QtOptions& options, std::shared_ptr<ImageLoader> imageLoader)
      : host_(&host), options_(options), imageLoader_(std::move(imageLoader)) {}

  ActivationState activationState() const override {
    if (!host_ || !host_->isVisible() || host_->visibility() == QWindow::Minimized) {
      return ActivationState::background;
    }
    return ActivationState::foregroundActive;
  }

  bool isWindowScene() const override { return true; }

  std::shared_ptr<Window> makeWindow() override {
    return std::make_shared<OverlayWindow>(host_, options_, imageLoader_);
  }

 private:
  const QPointer<QWindow> host_;
  const QtOptions options_;
  const std::shared_ptr<ImageLoader> imageLoader_;
};

bool canShowBanner(const QWindow* window) {
  const auto type = static_cast<Qt::WindowType>(static_cast<int>(window->flags() & Qt::WindowType_Mask));
  return !OverlaySurface::isOverlay(*window) && !window->transientParent() &&
         (type == Qt::Window || type == Qt::Dialog);
}

}  // namespace

QtApplication::QtApplication(QtOptions options, std::shared_ptr<ImageLoader> imageLoader)
    : options_(std::move(options)), imageLoader_(std::move(imageLoader)) {
  if (!options_.systemSettings) options_.systemSettings = portalSettings();
}

std::vector<std::shared_ptr<Scene>> QtApplication::connectedScenes() {
  QWindowList windows = QGuiApplication::topLevelWindows();
  windows.removeIf([](const QWindow* window) { return !canShowBanner(window); });
  // A host window also counts as active while its banner or one of its dialogs is active.
  const auto active = std::ranges::find_if(windows, &QWindow::isActive);
  if (active != windows.end()) std::rotate(windows.begin(), active, active + 1);
  std::vector<std::shared_ptr<Scene>> scenes;
  for (QWindow* window : windows) {
    scenes.push_back(std::make_shared<QtScene>(*window, options_, imageLoader_));
  }
  return scenes;
}

bool QtApplication::reducesMotion() const {
  return options_.reducesMotion.value_or(
      options_.systemSettings->preferences().reducesMotion.value_or(false));
}

void QtApplication::open(const URL& url) {
  if (options_.openURL) return options_.openURL(url);
  QDesktopServices::openUrl(QUrl(toQString(url.text()), QUrl::StrictMode));
}

}  // namespace TalvoConsentSDK
