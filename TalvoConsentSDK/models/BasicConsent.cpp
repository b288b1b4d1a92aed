#include "TalvoConsentSDK/models/BasicConsent.h"

#include <algorithm>
#include <utility>

namespace TalvoConsentSDK {

BasicConsent::BasicConsent(std::optional<ConsentValue> preferencesConsent,
                           std::optional<ConsentValue> statisticsConsent,
                           std::optional<ConsentValue> marketingConsent,
                           std::optional<std::string> identifier, std::optional<bool> isOptedIn)
    : preferences(std::move(preferencesConsent)),
      statistics(std::move(statisticsConsent)),
      marketing(std::move(marketingConsent)),
      id(std::move(identifier)),
      optedIn(isOptedIn) {}

BasicConsent BasicConsent::acceptAll() {
  return {ConsentValue::all(), ConsentValue::all(), ConsentValue::all()};
}

BasicConsent BasicConsent::rejectAll() {
  return {ConsentValue::none(), ConsentValue::none(), ConsentValue::none()};
}

ConsentStatus BasicConsent::status() const {
  std::vector<const ConsentValue*> present;
  for (const auto* category : {&preferences, &statistics, &marketing}) {
    if (category->has_value()) present.push_back(&**category);
  }
  if (!present.empty() && std::ranges::all_of(present, &ConsentValue::isAll)) return ConsentStatus::accepted;
  if (std::ranges::all_of(present, &ConsentValue::isNone)) return ConsentStatus::rejected;
  return ConsentStatus::partial;
}

std::vector<ConsentEvent> BasicConsent::consentEvents() const {
  const auto accepted = [](const std::optional<ConsentValue>& value) { return value && value->isEnabled(); };
  const bool p = accepted(preferences);
  const bool s = accepted(statistics);
  const bool m = accepted(marketing);

  std::vector<ConsentEvent> events;
  if (p && s && m) events.push_back(ConsentEvent::acceptAll);
  if (!p && !s && !m) return {ConsentEvent::rejectAll};
  if (p) events.push_back(ConsentEvent::preferenceAccepted);
  if (m) events.push_back(ConsentEvent::marketingAccepted);
  if (s) events.push_back(ConsentEvent::statisticsAccepted);
  return events;
}

}  // namespace TalvoConsentSDK
