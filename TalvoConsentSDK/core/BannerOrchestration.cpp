// CookiesSDK::showBanner: gathers what the banner needs, shows it, and turns the decision into a stored and
// submitted consent.

#include <utility>

#include "TalvoConsentSDK/core/ConsentFlow.h"
#include "TalvoConsentSDK/core/CookiesSDKState.h"
#include "TalvoConsentSDK/platform/Spawn.h"
#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/ui/ConsentBannerView.h"
#include "TalvoConsentSDK/ui/DrawnLength.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

using HandlersPointer = std::shared_ptr<const BannerHandlers>;

// Returns handlers that are destroyed on the main actor, whichever thread releases the last reference.
HandlersPointer releasedOn(const std::shared_ptr<Executor>& mainActor, BannerHandlers handlers) {
  auto owned = std::make_shared<const BannerHandlers>(std::move(handlers));
  const BannerHandlers* const pointer = owned.get();
  return {pointer, [mainActor, owned = std::move(owned)](const BannerHandlers*) mutable {
            platform::postOrRun(mainActor, [last = std::move(owned)] {});
          }};
}

/// The data of one showBanner call. The document, the services and the configuration are copied from the
/// instance's caches, and fetched if they were not cached.
struct BannerRequest {
  SitePointer site;
  ConsentLedger::Decision asked;  // as it was when the host asked for the banner
  HandlersPointer host;
  std::optional<BannerCustomization> document;
  std::optional<Services> services;
  std::optional<SiteConfiguration> configuration;
  std::string language;
  std::optional<BasicConsent> initialConsent{};

  void report(const Error& error) const {
    callHost([&] {
      if (host->onError) host->onError(error);
    });
  }
};

using BannerRequestPointer = std::shared_ptr<BannerRequest>;
using Handler = std::function<void()> BannerHandlers::*;

// Returns a closure that calls the host's handler on the main actor, soon.
std::function<void()> calling(const BannerRequestPointer& request, Handler handler) {
  return [request, handler] {
    platform::postOrRun(request->site->mainActor,
                        [request, handler] { callHost((*request->host).*handler); });
  };
}

// Submits the decision in the background, stores it, and calls the host's closure on the main actor.
void submitDecision(const BannerRequestPointer& request, BasicConsent consent, Handler handler) {
  ConsentLedger::Decision decision = request->site->ledger->beginDecision();
  const ConsentLedger::Decision& asked = request->asked;
  const bool isErased = decision.erasures != asked.erasures;
  if (!isErased && decision.person.identity != asked.person.identity) decision.person = asked.person;
  decision.isUpdate = request->initialConsent.has_value() && !isErased;
  if (isErased) consent.id.reset();
  FullConsent payload =
      explicitPayload(consent, request->document, decision.person.user.value, request->site->id);
  if (decision.isUpdate) payload.id = request->initialConsent->id;
  spawn<ConsentResponse>(request->site->background,
                         sendAndFile(request->site, std::move(payload), std::move(decision), consent),
                         [request, handler](const Result<ConsentResponse>& result) {
                           platform::postOrRun(request->site->mainActor, [request, handler, result] {
                             if (!result) return request->report(result.error());
                             callHost((*request->host).*handler);
                           });
                         });
}

BannerCallbacks callbacks(const BannerRequestPointer& request) {
  return {
      .onAcceptAll =
          [request] { submitDecision(request, BasicConsent::acceptAll(), &BannerHandlers::onAcceptAll); },
      .onRejectAll =
          [request] { submitDecision(request, BasicConsent::rejectAll(), &BannerHandlers::onRejectAll); },
      .onManagePreferences = calling(request, &BannerHandlers::onManagePreferences),
      .onSavePreferences =
          [request](const BasicConsent& consent) {
            submitDecision(request, consent, &BannerHandlers::onSaved);
          },
      .onClose = calling(request, &BannerHandlers::onClosed),
  };
}

Task<void> presentBanner(BannerRequestPointer request) {
  try {
    request->initialConsent = request->site->ledger->consent();

    if (!request->document) {
      auto fetch = request->site->apiClient->fetchBannerCustomization(request->language);
      BannerCustomization document = co_await std::move(fetch);
      request->document.emplace(std::move(document));
    }
    if (!request->document->customization) {
      throw Error(PlatformError("TalvoConsentSDK", -5, "No customization data in response"));
    }
    if (drawsTooMuch(*request->document->customization)) {
      throw Error(PlatformError("TalvoConsentSDK", -6, "The banner would draw more than 4 MB of text"));
    }
    if (!request->services) {
      auto fetch = request->site->apiClient->fetchServices(request->language);
      Services services = co_await std::move(fetch);
      request->services.emplace(std::move(services));
    }
    if (!request->configuration) {
      auto fetch = request->site->apiClient->fetchConfiguration();
      request->configuration = co_await std::move(fetch);
    }

    const auto& customization = *request->document->customization;
    const ConsentBannerView view(customization, std::move(request->services), request->configuration,
                                 request->initialConsent, callbacks(request));
    const bool isShown = ConsentBannerPresenter::shared()->show(
        view, customization, calling(request, &BannerHandlers::onReplaced));
    if (!isShown) callHost(request->host->onNotShown);
  } catch (...) {
    request->report(Error::current());
  }
}

}  // namespace

void CookiesSDK::showBanner(BannerHandlers handlers) {
  State& state = *state_;
  const SitePointer& site = state.site;
  const HandlersPointer host = releasedOn(site->mainActor, std::move(handlers));
  const ConsentLedger::Decision asked = site->ledger->beginDecision();
  BannerRequestPointer request;
  {
    const std::scoped_lock guard(state.lock);
    request =
        std::make_shared<BannerRequest>(site, asked, host, state.cachedCustomization, state.cachedServices,
                                        state.cachedConfiguration, state.language);
  }
  spawn<void>(site->mainActor, presentBanner(request), [request](const Result<void>& end) {
    if (!end) request->report(end.error());  // the task could not be started
  });
}

}  // namespace TalvoConsentSDK
