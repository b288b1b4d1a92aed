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

using namespace platform;

namespace {

SitePointer makeSite(const std::string& apiUrl, const std::string& siteId, const Platform& platform,
                     const std::shared_ptr<ConsentObservers>& observers) {
  auto httpClient = std::make_shared<URLSessionHTTPClient>(platform.urlSession, platform.background);
  auto storage = std::make_shared<ConsentStorage>(siteId, platform.userDefaults);
  return std::make_shared<const Site>(Site{
      .id = siteId,
      .apiClient = std::make_shared<APIClient>(apiUrl, siteId, std::move(httpClient)),
      .ledger = std::make_shared<ConsentLedger>(std::move(storage), observers),
      .eventManager = std::make_shared<ConsentEventManager>(),
      .mainActor = platform.mainActor,
      .background = platform.background,
      .callbacks = platform.callbacks,
  });
}

Task<void> fetchConfiguration(SitePointer site) {
  SiteConfiguration configuration;
  try {
    auto request = site->apiClient->fetchConfiguration();
    configuration = co_await std::move(request);
  } catch (...) {
    print(std::string("Failed to fetch configuration on init: ") + Error::current().what());
    co_return;
  }
  if (configuration.implicitConsent.value_or(false)) {
    auto submission = submitImplicitConsent(site, std::nullopt, IfConsentStored::keep);
    co_await std::move(submission);
  }
}

// Fetches the user's consent and stores it. Returns whether the service has one. A failure is printed and
// returns true, so that no implicit consent takes the place of a consent that the service may have.
Task<bool> storeIdentifiedConsent(SitePointer site, ConsentLedger::Login login) {
  try {
    auto request = site->apiClient->fetchIdentifiedConsent(login.userId, login.consentId);
    const std::optional<FullConsent> payload = co_await std::move(request);
    if (payload) site->ledger->fileIdentified(login, payload->toBasicConsent());
    co_return payload.has_value();
  } catch (...) {
    print(std::string("Error fetching identified consent: ") + Error::current().what());
    co_return true;
  }
}

Task<void> restoreIdentity(SitePointer site, ConsentLedger::Login login) {
  auto identified = storeIdentifiedConsent(site, std::move(login));
  co_await std::move(identified);
}

Task<void> completeIdentification(SitePointer site, ConsentLedger::Login login, bool implicit) {
  auto identified = storeIdentifiedConsent(site, login);
  const bool isKnown = co_await std::move(identified);
  if (!isKnown && implicit) {
    auto submission = submitImplicitConsent(site, login.userId, IfConsentStored::replace);
    co_await std::move(submission);
  }
  site->eventManager->trigger(ConsentEvent::identificationComplete);
}

Task<void> warmUp(SitePointer site, std::string language) {
  try {
    auto customization = site->apiClient->fetchBannerCustomization(language);
    co_await std::move(customization);
    auto services = site->apiClient->fetchServices(language);
    co_await std::move(services);
  } catch (...) {
    print(std::string("Failed to pre-fetch data with new language: ") + Error::current().what());
  }
}

// Reports an identification whose task could not be started.
void reportFailedStart(const Site& site, const Error& error) {
  print(std::string("Error fetching identified consent: ") + error.what());
  site.eventManager->trigger(ConsentEvent::identificationComplete);
}

class ChangeObserver : public ConsentObserver {
 public:
  ChangeObserver(std::shared_ptr<const ConsentLedger> ledger,
                 std::function<void(const std::optional<BasicConsent>&)> observer)
      : ledger_(std::move(ledger)), observer_(std::move(observer)), seen_(ledger_->known().version) {}

  void consentMayHaveChanged() override {
    const ConsentLedger::Known known = ledger_->known();
    if (std::exchange(seen_, known.version) == known.version || !observer_) return;
    observer_(known.consent ? std::optional(*known.consent) : std::nullopt);
  }

 private:
  const std::shared_ptr<const ConsentLedger> ledger_;
  const std::function<void(const std::optional<BasicConsent>&)> observer_;
  std::uint64_t seen_;  // the version of the consent that was reported last
};

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

CookiesSDK::State::State(const std::string& apiUrl, const std::string& siteId, const Platform& platform)
    : observers(std::make_shared<ConsentObservers>(platform.mainActor)),
      site(makeSite(apiUrl, siteId, platform, observers)) {}

CookiesSDK::CookiesSDK(const std::string& apiUrl, const std::string& siteId)
    : state_(std::make_unique<State>(apiUrl, siteId, Platform::current())) {}

// The part of creation that uses the store and the network. Runs as soon as a platform is installed.
void CookiesSDK::begin() {
  const State& state = *state_;
  auto login = state.site->ledger->storedLogin();
  spawn(state.site->mainActor, fetchConfiguration(state.site));
  if (login) spawn(state.site->mainActor, restoreIdentity(state.site, *std::move(login)));
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
  spawn(state.site->mainActor, warmUp(state.site, language));
}

std::optional<BasicConsent> CookiesSDK::getConsent() const {
  return state_->site->ledger->consent();
}

void CookiesSDK::submitConsent(const BasicConsent& consent, Completion completion) {
  announceEnd(state_->site, submission(consent), consent, std::move(completion));
}

// The payload is built here, before the task starts.
Task<ConsentResponse> CookiesSDK::submitConsent(const BasicConsent& consent) {
  return announcedEnd(state_->site, submission(consent), consent).on(state_->site->background);
}

Task<ConsentResponse> CookiesSDK::submission(const BasicConsent& consent) const {
  State& state = *state_;
  ConsentLedger::Decision decision = state.site->ledger->beginDecision();
  const std::scoped_lock guard(state.lock);
  FullConsent payload =
      explicitPayload(consent, state.cachedCustomization, decision.person.user.value, state.site->id);
  return sendAndFile(state.site, std::move(payload), std::move(decision), consent);
}

void CookiesSDK::identify(const std::string& userId) {
  State& state = *state_;
  ConsentLedger::Login login = state.site->ledger->logIn(userId);
  bool implicit = false;
  {
    const std::scoped_lock guard(state.lock);
    implicit = state.cachedConfiguration && state.cachedConfiguration->implicitConsent.value_or(false);
  }
  spawn<void>(state.site->mainActor, completeIdentification(state.site, std::move(login), implicit),
              [site = state.site](const Result<void>& end) {
                if (!end) reportFailedStart(*site, end.error());
              });
}

void CookiesSDK::removeIdentity() {
  state_->site->ledger->logOut();
}

bool CookiesSDK::eraseConsent() {
  return state_->site->ledger->erase();
}

ConsentGate CookiesSDK::gate() const {
  return {state_->site->ledger, state_->observers};
}

Subscription CookiesSDK::observeConsent(std::function<void(const std::optional<BasicConsent>&)> observer) {
  return ConsentObservers::add(state_->observers,
                               std::make_shared<ChangeObserver>(state_->site->ledger, std::move(observer)));
}

void CookiesSDK::addEventListener(ConsentEvent event, std::shared_ptr<ConsentEventCallback> callback) {
  state_->site->eventManager->addListener(event, std::move(callback));
}

void CookiesSDK::removeEventListener(ConsentEvent event,
                                     const std::shared_ptr<ConsentEventCallback>& callback) {
  state_->site->eventManager->removeListener(event, callback);
}

void CookiesSDK::removeEventListener(ConsentEvent event) {
  state_->site->eventManager->removeListeners(event);
}

void CookiesSDK::removeAllEventListeners() {
  state_->site->eventManager->removeAllListeners();
}

}  // namespace TalvoConsentSDK
