#include "TalvoConsentSDK/core/CookiesSDK.h"

#include <mutex>
#include <utility>

#include "TalvoConsentSDK/core/ClientSlot.h"
#include "TalvoConsentSDK/core/ConsentFlow.h"
#include "TalvoConsentSDK/core/CookiesSDKState.h"
#include "TalvoConsentSDK/core/SubmissionEnd.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/Spawn.h"
#include "TalvoConsentSDK/platform/installation/Installation.h"

namespace TalvoConsentSDK {

namespace {

using APIClientPointer = std::shared_ptr<APIClient>;
using LedgerPointer = std::shared_ptr<ConsentLedger>;
using EventManagerPointer = std::shared_ptr<ConsentEventManager>;

Task<void> fetchConfiguration(APIClientPointer apiClient, LedgerPointer ledger, std::string siteId) {
  SiteConfiguration configuration;
  try {
    auto request = apiClient->fetchConfiguration();
    configuration = co_await std::move(request);
  } catch (...) {
    print(std::string("Failed to fetch configuration on init: ") + Error::current().what());
    co_return;
  }
  if (configuration.implicitConsent.value_or(false)) {
    auto submission = submitImplicitConsent(apiClient, ledger, siteId, std::nullopt, ImplicitOver::nothing);
    co_await std::move(submission);
  }
}

// Tells whether the service knows a consent of the user; a failure is printed and counts as known, so that
// nothing is given implicitly in its place.
Task<bool> storeIdentifiedConsent(APIClientPointer apiClient, LedgerPointer ledger,
                                  ConsentLedger::Login login) {
  try {
    auto request = apiClient->fetchIdentifiedConsent(login.userId, login.consentId);
    const std::optional<FullConsent> payload = co_await std::move(request);
    if (payload) ledger->fileIdentified(login, payload->toBasicConsent());
    co_return payload.has_value();
  } catch (...) {
    print(std::string("Error fetching identified consent: ") + Error::current().what());
    co_return true;
  }
}

Task<void> restoreIdentity(APIClientPointer apiClient, LedgerPointer ledger, ConsentLedger::Login login) {
  auto identified = storeIdentifiedConsent(apiClient, ledger, std::move(login));
  co_await std::move(identified);
}

Task<void> completeIdentification(APIClientPointer apiClient, std::string siteId, LedgerPointer ledger,
                                  ConsentLedger::Login login, bool implicit,
                                  EventManagerPointer eventManager) {
  auto identified = storeIdentifiedConsent(apiClient, ledger, login);
  const bool isKnown = co_await std::move(identified);
  if (!isKnown && implicit) {
    auto submission =
        submitImplicitConsent(apiClient, ledger, std::move(siteId), login.userId, ImplicitOver::anyConsent);
    co_await std::move(submission);
  }
  eventManager->trigger(ConsentEvent::identificationComplete);
}

Task<void> warmUp(APIClientPointer apiClient, std::string language) {
  try {
    auto customization = apiClient->fetchBannerCustomization(language);
    co_await std::move(customization);
    auto services = apiClient->fetchServices(language);
    co_await std::move(services);
  } catch (...) {
    print(std::string("Failed to pre-fetch data with new language: ") + Error::current().what());
  }
}

// Reports an identification that could not even be begun.
void reportFailedStart(const EventManagerPointer& eventManager, const Error& error) {
  print(std::string("Error fetching identified consent: ") + error.what());
  eventManager->trigger(ConsentEvent::identificationComplete);
}

}  // namespace

std::shared_ptr<CookiesSDK> CookiesSDK::createInstance(const std::string& apiUrl, const std::string& siteId) {
  return ClientSlot<CookiesSDK>::shared().create([&] {
    std::shared_ptr<CookiesSDK> created(new CookiesSDK(apiUrl, siteId));
    if (!Platform::isInstalled()) print("⚠️ No platform is installed; call Platform::install");
    detail::onceInstalled([created] { created->begin(); });
    return created;
  });
}

std::shared_ptr<CookiesSDK> CookiesSDK::getInstance() {
  return ClientSlot<CookiesSDK>::shared().get();
}

CookiesSDK::State::State(const std::string& apiUrl, const std::string& site)
    : platform(Platform::current()),
      apiClient(std::make_shared<APIClient>(
          apiUrl, site, std::make_shared<URLSessionHTTPClient>(platform.urlSession, platform.background))),
      siteId(site),
      observers(std::make_shared<ConsentObservers>(platform.mainActor)),
      ledger(std::make_shared<ConsentLedger>(std::make_shared<ConsentStorage>(
          site, observed(platform.userDefaults, ConsentStorage::consentKey(site), observers)))) {}

CookiesSDK::CookiesSDK(const std::string& apiUrl, const std::string& siteId)
    : state_(std::make_unique<State>(apiUrl, siteId)) {}

// What creation does with the store and the network, as soon as there are any.
void CookiesSDK::begin() {
  const State& state = *state_;
  auto login = state.ledger->storedLogin();
  spawn(state.platform.mainActor, fetchConfiguration(state.apiClient, state.ledger, state.siteId));
  if (login) {
    spawn(state.platform.mainActor, restoreIdentity(state.apiClient, state.ledger, *std::move(login)));
  }
}

CookiesSDK::~CookiesSDK() = default;

void CookiesSDK::setLanguage(const std::string& language) {
  State& state = *state_;
  {
    const std::scoped_lock guard(state.lock);
    if (language == state.language) return;
    state.language = language;
    state.cachedCustomization.reset();
    state.cachedServices.reset();
  }
  spawn(state.platform.mainActor, warmUp(state.apiClient, language));
}

std::optional<BasicConsent> CookiesSDK::getConsent() const {
  return state_->ledger->consent();
}

void CookiesSDK::submitConsent(const BasicConsent& consent, Completion completion) {
  announceEnd(submission(consent), consent, state_->eventManager, state_->platform, std::move(completion));
}

// The consent is judged here; the task is the same submission, its completion the awaiter.
Task<ConsentResponse> CookiesSDK::submitConsent(const BasicConsent& consent) {
  return announcedEnd(submission(consent), consent, state_->eventManager, state_->platform)
      .on(state_->platform.background);
}

Task<ConsentResponse> CookiesSDK::submission(const BasicConsent& consent) const {
  State& state = *state_;
  ConsentLedger::Decision decision = state.ledger->beginDecision();
  const std::scoped_lock guard(state.lock);
  FullConsent payload =
      explicitPayload(consent, state.cachedCustomization, decision.person.user.value, state.siteId);
  return sendAndFile(state.apiClient, state.ledger, std::move(payload), std::move(decision), consent);
}

void CookiesSDK::identify(const std::string& userId) {
  State& state = *state_;
  ConsentLedger::Login login = state.ledger->logIn(userId);
  bool implicit = false;
  {
    const std::scoped_lock guard(state.lock);
    implicit = state.cachedConfiguration && state.cachedConfiguration->implicitConsent.value_or(false);
  }
  spawn<void>(state.platform.mainActor,
              completeIdentification(state.apiClient, state.siteId, state.ledger, std::move(login), implicit,
                                     state.eventManager),
              [eventManager = state.eventManager](const Result<void>& end) {
                if (!end) reportFailedStart(eventManager, end.error());
              });
}

void CookiesSDK::removeIdentity() {
  state_->ledger->logOut();
}

void CookiesSDK::addEventListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback) {
  state_->eventManager->addListener(event, std::move(callback));
}

void CookiesSDK::removeEventListener(ConsentEvent event,
                                     const std::shared_ptr<ConsentEventCallback>& callback) {
  state_->eventManager->removeListener(event, callback);
}

void CookiesSDK::removeEventListener(ConsentEvent event) {
  state_->eventManager->removeListeners(event);
}

void CookiesSDK::removeAllEventListeners() {
  state_->eventManager->removeAllListeners();
}

std::shared_ptr<void> observeStoredConsent(const CookiesSDK& client, std::function<void()> observer) {
  const auto observers = client.state_->observers;
  const int number = observers->add(std::move(observer));
  return {nullptr, [observers, number](void*) { observers->remove(number); }};
}

}  // namespace TalvoConsentSDK
