#include "TalvoConsentSDK/core/ConsentFlow.h"

#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

Task<ConsentResponse> send(const Site& site, FullConsent payload, bool isUpdate) {
  return isUpdate ? site.apiClient->updateConsent(std::move(payload))
                  : site.apiClient->createConsent(std::move(payload));
}

}  // namespace

FullConsent explicitPayload(const BasicConsent& consent, const std::optional<BannerCustomization>& shown,
                            std::optional<std::string> userId, std::string siteId) {
  FullConsent payload;
  payload.status = rawValue(consent.status());

  const std::optional<ConsentValue> all = ConsentValue::all();
  const auto none = ConsentValue::none();
  const std::pair<ConsentCategory, const std::optional<ConsentValue>&> chosen[] = {
      {ConsentCategory::necessary, all},
      {ConsentCategory::unclassified, all},
      {ConsentCategory::preferences, consent.preferences},
      {ConsentCategory::marketing, consent.marketing},
      {ConsentCategory::statistics, consent.statistics}};
  auto& categories = payload.categories.emplace();
  for (const auto& [category, value] : chosen)
    categories[std::string(rawValue(category))] = value.value_or(none);
  if (consent.optedIn) categories["optedIn"] = ConsentValue(*consent.optedIn);

  auto& analytics = payload.consentDataAnalytics.emplace();
  if (shown) analytics.bannerType = shown->bannerType;
  if (shown && shown->customization) {
    const auto& settings = shown->customization->settings;
    analytics.positioning = settings.positioning;
    analytics.blurred = settings.isShowBlurBackground;
    analytics.poweredBy = settings.isShowPoweredBy;
  }

  payload.typeConsent = "explicit";
  payload.userId = std::move(userId);
  payload.id = consent.id;
  payload.siteId = std::move(siteId);
  return payload;
}

FullConsent implicitPayload(std::optional<std::string> userId, std::string siteId) {
  FullConsent payload;
  payload.status = rawValue(BasicConsent::acceptAll().status());
  auto& categories = payload.categories.emplace();
  using enum ConsentCategory;
  for (const ConsentCategory category : {necessary, unclassified, preferences, marketing, statistics}) {
    categories[std::string(rawValue(category))] = ConsentValue::all();
  }
  payload.consentDataAnalytics.emplace();
  payload.typeConsent = "implicit";
  payload.userId = std::move(userId);
  payload.siteId = std::move(siteId);
  return payload;
}

Task<ConsentResponse> sendAndFile(SitePointer site, FullConsent payload, ConsentLedger::Decision decision,
                                  BasicConsent consent) {
  auto request = send(*site, std::move(payload), decision.isUpdate);
  ConsentResponse response = co_await std::move(request);
  site->ledger->fileDecision(decision, consent);
  co_return response;
}

Task<void> submitImplicitConsent(SitePointer site, std::optional<std::string> userId,
                                 IfConsentStored ifStored) {
  try {
    const auto implicit = site->ledger->beginImplicit(ifStored == IfConsentStored::replace);
    if (!implicit) co_return;
    auto request = send(*site, implicitPayload(std::move(userId), site->id), implicit->isUpdate);
    co_await std::move(request);
    site->ledger->fileImplicit(*implicit, BasicConsent::acceptAll());
  } catch (...) {
    print(std::string("Failed to submit implicit consent: ") + Error::current().what());
  }
}

}  // namespace TalvoConsentSDK
