// CookiesSDK::showBanner: gathers what the banner needs, shows it, and turns the decision into a stored and
// submitted consent.

#include <array>
#include <atomic>
#include <chrono>
#include <utility>

#include "TalvoConsentSDK/base/Deadline.h"
#include "TalvoConsentSDK/core/ConsentFlow.h"
#include "TalvoConsentSDK/core/CookiesSDKState.h"
#include "TalvoConsentSDK/network/HTTPClientError.h"
#include "TalvoConsentSDK/platform/Platform.h"
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

// The documents that a banner needs. If several are missing, the failure of the first one is reported.
enum Part : std::size_t { customizationPart, servicesPart, configurationPart, partCount };

// The fetch of one document. It ends on the main actor, or on another thread if the main actor refuses a job.
struct Fetch {
  RequestOptions options;
  std::optional<Error> failure;  // set before hasEnded
  std::atomic<bool> hasEnded = false;
};

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
  std::chrono::steady_clock::time_point deadline;
  std::optional<BasicConsent> initialConsent{};
  std::array<Fetch, partCount> fetches{};
  std::atomic<bool> isJudged = false;

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

void presentBanner(const BannerRequestPointer& request) {
  try {
    const auto& customization = *request->document->customization;
    Platform::current().localization->setLanguage(request->language);
    const ConsentBannerView view(customization, std::move(request->services), request->configuration,
                                 request->initialConsent, callbacks(request), request->language);
    const bool isShown = ConsentBannerPresenter::shared()->show(
        view, customization, calling(request, &BannerHandlers::onReplaced));
    callHost(isShown ? request->host->onShown : request->host->onNotShown);
  } catch (...) {
    request->report(Error::current());
  }
}

// Fetches one document, unless it was cached. Throws if it cannot be fetched, or if it is a customization
// that no banner can be made from.
Task<void> fetchPart(BannerRequestPointer request, Part part) {
  const APIClient& api = *request->site->apiClient;
  const RequestOptions& options = request->fetches[part].options;
  if (part == customizationPart) {
    request->initialConsent = request->site->ledger->consent();
    if (!request->document) {
      auto fetch = api.fetchBannerCustomization(request->language, options);
      BannerCustomization document = co_await std::move(fetch);
      request->document.emplace(std::move(document));
    }
    if (!request->document->customization) {
      throw Error(PlatformError("TalvoConsentSDK", -5, "No customization data in response"));
    }
    if (drawsTooMuch(*request->document->customization)) {
      throw Error(PlatformError("TalvoConsentSDK", -6, "The banner would draw more than 4 MB of text"));
    }
  } else if (part == servicesPart && !request->services) {
    auto fetch = api.fetchServices(request->language, options);
    Services services = co_await std::move(fetch);
    request->services.emplace(std::move(services));
  } else if (part == configurationPart && !request->configuration) {
    auto fetch = api.fetchConfiguration(options);
    request->configuration = co_await std::move(fetch);
  }
}

// Called when the fetch of `part` has ended. Shows the banner if all documents are there. Reports the failure
// of a document as soon as all documents before it are there; then nothing that arrives later counts.
void judge(const BannerRequestPointer& request, Part part, const Result<void>& outcome) {
  Fetch& fetch = request->fetches[part];
  if (!outcome) {
    fetch.failure = outcome.error();
  } else if (std::chrono::steady_clock::now() > request->deadline) {
    fetch.failure = HTTPClientError::networkError(
        PlatformError("TalvoConsentSDK", -9, "The time limit for the banner has passed"));
  }
  if (fetch.failure) {  // the later documents no longer matter; the earlier ones may still fail first
    for (std::size_t later = part + 1; later < partCount; ++later)
      request->fetches[later].options.cancellation->cancel();
  }
  fetch.hasEnded = true;
  const Error* failure = nullptr;
  for (const Fetch& each : request->fetches) {
    if (!each.hasEnded) return;
    if (each.failure) {
      failure = &*each.failure;
      break;
    }
  }
  if (request->isJudged.exchange(true)) return;
  if (!failure) return presentBanner(request);
  request->report(*failure);
  request->host = nullptr;  // releases the host's closures now: the other fetches may take long to end
}

}  // namespace

void CookiesSDK::showBanner(BannerHandlers handlers, BannerOptions options) {
  using Clock = std::chrono::steady_clock;
  const auto deadline = options.timeLimit ? deadlineAfter(*options.timeLimit) : Clock::time_point::max();
  State& state = *state_;
  const SitePointer& site = state.site;
  const HandlersPointer host = releasedOn(site->mainActor, std::move(handlers));
  const ConsentLedger::Decision asked = site->ledger->beginDecision();  // may wait for the store
  BannerRequestPointer request;
  {
    const std::scoped_lock guard(state.lock);
    request =
        std::make_shared<BannerRequest>(site, asked, host, state.cachedCustomization, state.cachedServices,
                                        state.cachedConfiguration, state.language, deadline);
  }
  for (Fetch& each : request->fetches) {
    each.options.cancellation = std::make_shared<Cancellation>();
    each.options.totalTimeout = options.timeLimit;
  }
  for (const Part part : {customizationPart, servicesPart, configurationPart}) {
    spawn<void>(site->mainActor, fetchPart(request, part),
                [request, part](const Result<void>& outcome) { judge(request, part, outcome); });
  }
}

}  // namespace TalvoConsentSDK
