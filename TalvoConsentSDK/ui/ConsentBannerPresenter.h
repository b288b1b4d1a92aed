#pragma once

// Puts the banner on screen above the host's interface, and takes it away.

#include <memory>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/platform/Window.h"
#include "TalvoConsentSDK/ui/ConsentBannerView.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

namespace view {
class HostingController;
}

/// The process's one presenter: it holds the banner's window while there is one. Main thread only.
class ConsentBannerPresenter : public std::enable_shared_from_this<ConsentBannerPresenter> {
 public:
  static const std::shared_ptr<ConsentBannerPresenter>& shared();

  /// Shows a banner in a new window on the first scene in the foreground, fading in. Without such a scene
  /// nothing happens. Accepting, rejecting, saving and closing dismiss the banner after they have been
  /// reported; managing preferences does not. A banner that is still on show is replaced. Once a banner has
  /// reported one of them, is being dismissed or has been replaced, it reports nothing more, even if it is
  /// still seen.
  void show(const ConsentBannerView& bannerView, const BannerCustomization::Customization& customization);

  /// Fades the banner out and lets go of its window; nothing when there is none.
  void dismiss();

 private:
  ConsentBannerView wrapped(const ConsentBannerView& bannerView, const std::shared_ptr<bool>& isOver);

  std::shared_ptr<view::HostingController> hostingController_;
  std::shared_ptr<platform::Window> overlayWindow_;
  std::shared_ptr<bool> isOver_;  // of the banner in that window; shared with its callbacks
};

/// The banner with its placement and, where the customization asks for it, a dimmed backdrop that keeps
/// touches from the host.
view::AnyView bannerComposition(const view::AnyView& banner,
                                const BannerCustomization::Customization& customization);

}  // namespace TalvoConsentSDK
