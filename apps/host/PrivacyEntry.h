#pragma once

// The entry in an app's settings that shows the banner, and that is busy while the banner is on its way.

#include <functional>
#include <memory>
#include <utility>

#include "TalvoConsentSDK/TalvoConsentSDK.h"

namespace TalvoConsentHost {

/// Use it on the main thread. `showBusy` shows a busy indicator on the entry's button, or takes it away.
class PrivacyEntry : public std::enable_shared_from_this<PrivacyEntry> {
 public:
  explicit PrivacyEntry(std::function<void(bool)> showBusy) : showBusy_(std::move(showBusy)) {}

  /// Shows the banner. A second tap says that the user does not want to wait: it only takes the indicator
  /// away, and the banner is shown when it arrives.
  void tapped(TalvoConsentSDK::CookiesSDK& sdk, TalvoConsentSDK::BannerHandlers handlers) {
    setBusy(!isBusy_);
    if (!isBusy_) return;
    const auto arrived = [weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->setBusy(false);
    };
    handlers.onShown = arrived;
    handlers.onNotShown = arrived;
    handlers.onError = [arrived, onError = handlers.onError](const TalvoConsentSDK::Error& error) {
      arrived();
      if (onError) onError(error);
    };
    sdk.showBanner(std::move(handlers));
  }

 private:
  void setBusy(bool isBusy) { showBusy_(isBusy_ = isBusy); }

  const std::function<void(bool)> showBusy_;
  bool isBusy_ = false;
};

}  // namespace TalvoConsentHost
