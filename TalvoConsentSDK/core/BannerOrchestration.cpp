// CookiesSDK::showBanner: gathers what the banner needs, shows it, and turns the decision into a stored and
// submitted consent.

#include <utility>

#include "TalvoConsentSDK/core/ConsentFlow.h"
#include "TalvoConsentSDK/core/CookiesSDKState.h"
#include "TalvoConsentSDK/platform/Spawn.h"
#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/ui/ConsentBannerView.h"

namespace TalvoConsentSDK {

namespace {

/// What one showBanner call read of the instance, and the host's closures.
struct BannerRequest {
  std::shared_ptr<ConsentStorage> storage;
  std::shared_ptr<APIClient> apiClient;
  std::optional<BannerCustomization> cachedCustomization;
  std::optional<Services> cachedServices;
  std::optional<SiteConfiguration> cachedConfiguration;
  std::string language;
  std::optional<std::string> userId;
  std::string siteId;
  std::shared_ptr<Executor> mainActor;
  std::shared_ptr<Executor> background;
  std::function<void()> onAcceptAll;
  std::function<void()> onRejectAll;
  std::function<void()> onManagePreferences;
  std::function<void(Error)> onError;

  void report(const Error& error) const {
    callHost([&] {
      if (onError) onError(error);
    });
  }
};

using BannerRequestPointer = std::shared_ptr<const BannerRequest>;

/// A banner on show: the consent stored and the document used when it was.
struct ShownBanner {
  BannerRequestPointer request;
  std::optional<BasicConsent> initialConsent;
  BannerCustomization document;
};

// Submits in the background, stores, and answers the host on the main actor.
void submitDecision(const std::shared_ptr<const ShownBanner>& banner, const BasicConsent& consent,
                    const std::function<void()>& hostCallback) {
  const BannerRequestPointer& request = banner->request;
  FullConsent payload = explicitPayload(consent, banner->document, request->userId, request->siteId);
  const bool isUpdate = banner->initialConsent.has_value();
  if (isUpdate) payload.id = banner->initialConsent->id;
  spawn<ConsentResponse>(
      request->background,
      sendAndStore(request->apiClient, request->storage, std::move(payload), isUpdate, consent),
      [request, hostCallback](const Result<ConsentResponse>& result) {
        request->mainActor->post([request, hostCallback, result] {
          if (!result) return request->report(result.error());
          callHost(hostCallback);
        });
      });
}

BannerCallbacks callbacks(const std::shared_ptr<const ShownBanner>& banner) {
  const BannerRequestPointer& request = banner->request;
  return {
      .onAcceptAll = [banner,
                      request] { submitDecision(banner, BasicConsent::acceptAll(), request->onAcceptAll); },
      .onRejectAll = [banner,
                      request] { submitDecision(banner, BasicConsent::rejectAll(), request->onRejectAll); },
      .onManagePreferences =
          [request] { request->mainActor->post([request] { callHost(request->onManagePreferences); }); },
      .onSavePreferences =
          [banner, request](const BasicConsent& consent) {
            submitDecision(banner, consent, request->onManagePreferences);
          },
      .onClose = [] {},
  };
}

Task<void> presentBanner(BannerRequestPointer request) {
  try {
    auto initialConsent = request->storage->loadConsent();

    std::optional<BannerCustomization> document = request->cachedCustomization;
    if (!document) {
      auto fetch = request->apiClient->fetchBannerCustomization(request->language);
      document = co_await std::move(fetch);
    }
    if (!document->customization) {
      throw Error(PlatformError("TalvoConsentSDK", -5, "No customization data in response"));
    }

    std::optional<Services> services = request->cachedServices;
    if (!services) {
      auto fetch = request->apiClient->fetchServices(request->language);
      services = co_await std::move(fetch);
    }

    std::optional<SiteConfiguration> configuration = request->cachedConfiguration;
    if (!configuration) {
      auto fetch = request->apiClient->fetchConfiguration();
      configuration = co_await std::move(fetch);
    }

    const auto banner =
        std::make_shared<const ShownBanner>(ShownBanner{request, initialConsent, *std::move(document)});
    const auto& customization = *banner->document.customization;
    const ConsentBannerView view(customization, std::move(services), configuration, std::move(initialConsent),
                                 callbacks(banner));
    ConsentBannerPresenter::shared()->show(view, customization);
  } catch (...) {
    request->report(Error::current());
  }
}

}  // namespace

void CookiesSDK::showBanner(std::function<void()> onAcceptAll, std::function<void()> onRejectAll,
                            std::function<void()> onManagePreferences, std::function<void(Error)> onError) {
  State& state = *state_;
  BannerRequestPointer request;
  {
    const std::scoped_lock guard(state.lock);
    state.loadWhatIsUnknown();
    request = std::make_shared<const BannerRequest>(
        BannerRequest{state.storage, state.apiClient, state.cachedCustomization, state.cachedServices,
                      state.cachedConfiguration, state.language, state.userId, state.siteId,
                      state.platform.mainActor, state.platform.background, std::move(onAcceptAll),
                      std::move(onRejectAll), std::move(onManagePreferences), std::move(onError)});
  }
  spawn(state.platform.mainActor, presentBanner(std::move(request)));
}

}  // namespace TalvoConsentSDK
