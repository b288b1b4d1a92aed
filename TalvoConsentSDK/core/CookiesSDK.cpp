#include "TalvoConsentSDK/core/CookiesSDK.h"

#include <mutex>
#include <utility>

#include "TalvoConsentSDK/core/ConsentFlow.h"
#include "TalvoConsentSDK/core/CookiesSDKState.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/Spawn.h"

namespace TalvoConsentSDK {

namespace {

// Never destroyed: threads may still ask for the instance while the process exits.
struct SharedInstance {
  std::mutex creation;  // creating an instance calls the host's store, printer and executors
  std::mutex lock;      // guards what follows; no host code runs under it
  std::shared_ptr<CookiesSDK> instance;

  static SharedInstance& slot() {
    static SharedInstance& shared = *new SharedInstance;
    return shared;
  }
};

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

Task<ConsentResponse> submitAndAnnounce(APIClientPointer apiClient, LedgerPointer ledger,
                                        EventManagerPointer eventManager, FullConsent payload,
                                        ConsentLedger::Decision decision, BasicConsent consent) {
  auto submission =
      sendAndFile(std::move(apiClient), std::move(ledger), std::move(payload), std::move(decision), consent);
  ConsentResponse response = co_await std::move(submission);
  std::vector<ConsentEvent> events = consent.consentEvents();
  events.push_back(ConsentEvent::consentSent);
  eventManager->trigger(events);
  co_return response;
}

}  // namespace

std::shared_ptr<CookiesSDK> CookiesSDK::createInstance(const std::string& apiUrl, const std::string& siteId) {
  SharedInstance& shared = SharedInstance::slot();
  const std::scoped_lock creating(shared.creation);
  if (auto existing = getInstance()) return existing;
  std::shared_ptr<CookiesSDK> created(new CookiesSDK(apiUrl, siteId));
  const std::scoped_lock guard(shared.lock);
  return shared.instance = std::move(created);
}

std::shared_ptr<CookiesSDK> CookiesSDK::getInstance() {
  SharedInstance& shared = SharedInstance::slot();
  const std::scoped_lock guard(shared.lock);
  return shared.instance;
}

CookiesSDK::State::State(const std::string& apiUrl, const std::string& site)
    : platform(Platform::current()),
      apiClient(std::make_shared<APIClient>(
          apiUrl, site, std::make_shared<URLSessionHTTPClient>(platform.urlSession, platform.background))),
      siteId(site),
      ledger(std::make_shared<ConsentLedger>(std::make_shared<ConsentStorage>(site, platform.userDefaults))) {
}

CookiesSDK::CookiesSDK(const std::string& apiUrl, const std::string& siteId)
    : state_(std::make_unique<State>(apiUrl, siteId)) {
  const State& state = *state_;
  spawn(state.platform.mainActor, fetchConfiguration(state.apiClient, state.ledger, siteId));
  if (auto login = state.ledger->storedLogin()) {
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
  spawn(state_->platform.background, submission(consent), std::move(completion));
}

Task<ConsentResponse> CookiesSDK::submitConsent(const BasicConsent& consent) {
  return submission(consent).on(state_->platform.background);
}

Task<ConsentResponse> CookiesSDK::submission(const BasicConsent& consent) const {
  State& state = *state_;
  ConsentLedger::Decision decision = state.ledger->beginDecision();
  const std::scoped_lock guard(state.lock);
  FullConsent payload = explicitPayload(consent, state.cachedCustomization, decision.userId, state.siteId);
  return submitAndAnnounce(state.apiClient, state.ledger, state.eventManager, std::move(payload),
                           std::move(decision), consent);
}

void CookiesSDK::identify(const std::string& userId) {
  State& state = *state_;
  ConsentLedger::Login login = state.ledger->logIn(userId);
  bool implicit = false;
  {
    const std::scoped_lock guard(state.lock);
    implicit = state.cachedConfiguration && state.cachedConfiguration->implicitConsent.value_or(false);
  }
  spawn(state.platform.mainActor, completeIdentification(state.apiClient, state.siteId, state.ledger,
                                                         std::move(login), implicit, state.eventManager));
}

void CookiesSDK::removeIdentity() {
  state_->ledger->logOut();
}

void CookiesSDK::addEventListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback) {
  state_->eventManager->addListener(event, std::move(callback));
}

void CookiesSDK::removeEventListener(ConsentEvent event) {
  state_->eventManager->removeListeners(event);
}

void CookiesSDK::removeAllEventListeners() {
  state_->eventManager->removeAllListeners();
}

}  // namespace TalvoConsentSDK
