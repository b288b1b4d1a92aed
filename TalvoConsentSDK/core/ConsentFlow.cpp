#include "TalvoConsentSDK/core/ConsentFlow.h"

#include <utility>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

FullConsent explicitPayload(const BasicConsent& consent, const std::optional<BannerCustomization>& shown,
                            std::optional<std::string> userId, std::string siteId) {
  FullConsent payload;
  payload.status = rawValue(consent.status());

  auto& categories = payload.categories.emplace();
  categories["necessary"] = ConsentValue::all();
  categories["unclassified"] = ConsentValue::all();
  categories["preferences"] = consent.preferences.value_or(ConsentValue::none());
  categories["marketing"] = consent.marketing.value_or(ConsentValue::none());
  categories["statistics"] = consent.statistics.value_or(ConsentValue::none());
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
  for (const char* category : {"necessary", "unclassified", "preferences", "marketing", "statistics"}) {
    categories[category] = ConsentValue::all();
  }
  payload.consentDataAnalytics.emplace();
  payload.typeConsent = "implicit";
  payload.userId = std::move(userId);
  payload.siteId = std::move(siteId);
  return payload;
}

Task<ConsentResponse> sendAndFile(std::shared_ptr<APIClient> apiClient, std::shared_ptr<ConsentLedger> ledger,
                                  FullConsent payload, ConsentLedger::Decision decision,
                                  BasicConsent consent) {
  auto request = decision.isUpdate ? apiClient->updateConsent(std::move(payload))
                                   : apiClient->createConsent(std::move(payload));
  ConsentResponse response = co_await std::move(request);
  ledger->fileDecision(decision, consent);
  co_return response;
}

Task<void> submitImplicitConsent(std::shared_ptr<APIClient> apiClient, std::shared_ptr<ConsentLedger> ledger,
                                 std::string siteId, std::optional<std::string> userId, ImplicitOver over) {
  try {
    const auto implicit = ledger->beginImplicit(over == ImplicitOver::anyConsent);
    if (!implicit) co_return;
    FullConsent payload = implicitPayload(std::move(userId), std::move(siteId));
    auto request = implicit->isUpdate ? apiClient->updateConsent(std::move(payload))
                                      : apiClient->createConsent(std::move(payload));
    co_await std::move(request);
    ledger->fileImplicit(*implicit, BasicConsent::acceptAll());
  } catch (...) {
    print(std::string("Failed to submit implicit consent: ") + Error::current().what());
  }
}

}  // namespace TalvoConsentSDK
