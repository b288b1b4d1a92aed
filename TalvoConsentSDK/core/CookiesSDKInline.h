#pragma once

// Conveniences of CookiesSDK that are built on its other functions. They are inline, so that only hosts that
// use them carry their code. Included by CookiesSDK.h.

#include <atomic>

#include "TalvoConsentSDK/core/CookiesSDK.h"
#include "TalvoConsentSDK/platform/Spawn.h"

namespace TalvoConsentSDK {

inline Subscription CookiesSDK::addEventListener(ConsentEvent event, std::function<void()> listener) {
  const auto isOn =
      std::make_shared<std::atomic<bool>>(true);  // an event that is being raised calls it no more
  const auto callback = std::make_shared<ConsentEventClosureCallback>(
      [isOn, listener = std::move(listener)] {
        if (*isOn && listener) listener();
      },
      [] {});
  addEventListener(event, callback);
  const auto remove = [this, event, callback, isOn](void*) {
    *isOn = false;
    removeEventListener(event, callback);
  };
  return Subscription(std::shared_ptr<void>(nullptr, remove));
}

inline void CookiesSDK::showBanner(std::function<void()> onAcceptAll, std::function<void()> onRejectAll,
                                   std::function<void()> onManagePreferences,
                                   std::function<void(Error)> onError) {
  auto managePreferences =
      [manage = std::make_shared<const std::function<void()>>(std::move(onManagePreferences))] {
        if (*manage) (*manage)();
      };
  showBanner(BannerHandlers{.onAcceptAll = std::move(onAcceptAll),
                            .onRejectAll = std::move(onRejectAll),
                            .onSaved = managePreferences,
                            .onError = std::move(onError),
                            .onManagePreferences = std::move(managePreferences)});
}

inline Task<BannerOutcome> CookiesSDK::showBanner(BannerOptions options) {
  using Report = std::function<void(Result<BannerOutcome>)>;
  CallbackAwaiter<Result<BannerOutcome>> end([this, options](const Report& report) {
    const auto reporting = [&report](BannerOutcome outcome) {
      return [report, outcome] { report(outcome); };
    };
    showBanner(BannerHandlers{.onAcceptAll = reporting(BannerOutcome::accepted),
                              .onRejectAll = reporting(BannerOutcome::rejected),
                              .onSaved = reporting(BannerOutcome::saved),
                              .onClosed = reporting(BannerOutcome::closed),
                              .onReplaced = reporting(BannerOutcome::replaced),
                              .onNotShown = reporting(BannerOutcome::notShown),
                              .onError = report},
               options);
  });
  Result<BannerOutcome> result = co_await std::move(end);
  co_return std::move(result).value();
}

}  // namespace TalvoConsentSDK
