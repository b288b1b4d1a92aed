#pragma once

// Puts the banner on screen above the host's interface and takes it away again.

#include <functional>
#include <memory>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/platform/Window.h"
#include "TalvoConsentSDK/ui/ConsentBannerView.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

namespace view {
class HostingController;
}

/// Owns the banner's window while a banner is shown. There is one presenter per process. Main thread only.
class ConsentBannerPresenter : public std::enable_shared_from_this<ConsentBannerPresenter> {
 public:
  static const std::shared_ptr<ConsentBannerPresenter>& shared();

  /// Shows a banner in a new window on the first scene in the foreground and fades it in. Returns false, and
  /// does nothing, if there is no such scene or it makes no window. Replaces a banner that is still shown;
  /// `onReplaced` is called if this happens to the new banner before it has reported anything. When the user
  /// accepts, rejects, saves or closes, the banner first reports this and is then dismissed; managing
  /// preferences does not dismiss it. A banner whose window is lost also reports that it was closed. Once a
  /// banner has made one of these four reports, or has been dismissed or replaced, it reports nothing more,
  /// even while it is still visible.
  bool show(const ConsentBannerView& bannerView, const BannerCustomization::Customization& customization,
            std::function<void()> onReplaced = nullptr);

  /// Fades the banner out and then releases its window. Does nothing if no banner is shown.
  void dismiss();

 private:
  void forgetBanner();
  ConsentBannerView wrapped(const ConsentBannerView& bannerView, const std::shared_ptr<bool>& isOver);

  std::shared_ptr<view::HostingController> hostingController_;
  std::shared_ptr<platform::Window> overlayWindow_;
  std::function<void()> onReplaced_;  // of the banner in overlayWindow_
  // Whether the banner in overlayWindow_ must report nothing more. Shared with the banner's callbacks.
  std::shared_ptr<bool> isOver_;
};

/// Places the banner in the window. If the customization asks for it, also adds a dimmed backdrop, which
/// keeps touches from reaching the host.
view::AnyView bannerComposition(const view::AnyView& banner,
                                const BannerCustomization::Customization& customization);

}  // namespace TalvoConsentSDK
