#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

#include "TalvoConsentSDK/base/NeverDestroyed.h"
#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/ui/CardScreen.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/view/HostingController.h"
#include "TalvoConsentSDK/view/TextDirection.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr std::chrono::milliseconds fadeTime(300);

std::chrono::milliseconds fadeDuration() {
  const bool isInstant =
      platform::askHost(false, [] { return Platform::current().application->reducesMotion(); });
  return isInstant ? std::chrono::milliseconds::zero() : fadeTime;
}

LayoutDirection bannerDirection(const BannerCustomization::Customization& customization) {
  const auto& messages = customization.messages.bannerMessages;
  return Platform::current().application->layoutDirection().value_or(
      dominantDirection(messages.title + messages.mainMessage));
}

std::shared_ptr<Scene> foregroundScene() {
  const auto scenes = Platform::current().application->connectedScenes();
  const auto scene = std::ranges::find_if(scenes, [](const auto& each) {
    return each && each->activationState() == ActivationState::foregroundActive && each->isWindowScene();
  });
  return scene == scenes.end() ? nullptr : *scene;
}

}  // namespace

AnyView bannerComposition(const AnyView& banner, const BannerCustomization::Customization& customization) {
  const Alignment placement{HorizontalAlignment::center,
                            isAtTop(customization) ? VerticalAlignment::top : VerticalAlignment::bottom};
  if (!customization.settings.isShowBlurBackground) {
    return banner.frame({.maxWidth = infinity, .maxHeight = infinity, .alignment = placement});
  }
  const AnyView backdrop = shape(Color::black().withAlpha(0.3)).ignoresSafeArea();
  return depthStack(placement, {backdrop, banner});
}

const std::shared_ptr<ConsentBannerPresenter>& ConsentBannerPresenter::shared() {
  static const auto& presenter = neverDestroyed(std::make_shared<ConsentBannerPresenter>());
  return presenter;
}

bool ConsentBannerPresenter::show(const ConsentBannerView& bannerView,
                                  const BannerCustomization::Customization& customization,
                                  std::function<void()> onReplaced) {
  const auto scene = foregroundScene();
  if (!scene) return false;
  if (const std::string_view unseen = Palette::unseenColors(customization); !unseen.empty()) {
    print("⚠️ Text that could not be seen is drawn in black or white: " + std::string(unseen));
  }

  const auto isOver = std::make_shared<bool>(false);
  const ConsentBannerView reporting = wrapped(bannerView, isOver);
  const auto controller = std::make_shared<HostingController>(
      bannerComposition(reporting.view(), customization), bannerDirection(customization));
  controller->setBackgroundColor(Color::clear());
  controller->setOnWindowLost(reporting.callbacks().onClose);

  const auto window = scene->makeWindow();
  if (!window) return false;
  window->setRootViewController(controller);
  window->setWindowLevel(WindowLevel::alert);
  window->setBackgroundColor(Color::clear());
  window->makeKeyAndVisible();
  const bool isReplacing = isOver_ && !std::exchange(*isOver_, true);  // from now on it reports nothing more
  const std::function<void()> wasReplaced = std::exchange(onReplaced_, std::move(onReplaced));
  isOver_ = isOver;
  hostingController_ = controller;
  overlayWindow_ = window;
  if (isReplacing) callHost(wasReplaced);
  try {
    window->setAlpha(0);
    window->animateAlpha(1, fadeDuration(), [] {});
  } catch (...) {
    // The caller reports a failure, so no banner may remain that reports something else.
    *isOver = true;
    if (overlayWindow_ == window) forgetBanner();
    throw;
  }
  return true;
}

void ConsentBannerPresenter::forgetBanner() {
  onReplaced_ = nullptr;
  overlayWindow_.reset();
  hostingController_.reset();
}

void ConsentBannerPresenter::dismiss() {
  if (!overlayWindow_) return;
  *isOver_ = true;
  onReplaced_ = nullptr;
  const auto fading = overlayWindow_;  // animateAlpha may run code that replaces the banner
  fading->animateAlpha(0, fadeDuration(), [self = shared_from_this(), window = fading] {
    window->setHidden(true);
    // If another banner was shown during the fade, keep that one.
    if (self->overlayWindow_ != window) return;
    self->forgetBanner();
  });
}

ConsentBannerView ConsentBannerPresenter::wrapped(const ConsentBannerView& bannerView,
                                                  const std::shared_ptr<bool>& isOver) {
  const auto dismissing = [self = weak_from_this(), isOver](auto callback) {
    return [self, isOver, callback = std::move(callback)](const auto&... arguments) {
      if (std::exchange(*isOver, true)) return;
      if (callback) callback(arguments...);
      const auto presenter = self.lock();
      // If the callback has shown another banner, keep that one.
      if (presenter && presenter->isOver_ == isOver) presenter->dismiss();
    };
  };
  const BannerCallbacks& callbacks = bannerView.callbacks();
  return bannerView.withCallbacks({
      .onAcceptAll = dismissing(callbacks.onAcceptAll),
      .onRejectAll = dismissing(callbacks.onRejectAll),
      .onManagePreferences =
          [isOver, manage = callbacks.onManagePreferences] {
            if (!*isOver) manage();
          },
      .onSavePreferences = dismissing(callbacks.onSavePreferences),
      .onClose = dismissing(callbacks.onClose),
  });
}

}  // namespace TalvoConsentSDK
