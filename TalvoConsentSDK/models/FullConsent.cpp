#include "TalvoConsentSDK/models/FullConsent.h"

#include <string_view>

namespace TalvoConsentSDK {

BasicConsent FullConsent::toBasicConsent() const {
  const auto category = [this](std::string_view key) -> std::optional<ConsentValue> {
    if (!categories) return std::nullopt;
    const auto entry = categories->find(key);
    if (entry == categories->end()) return std::nullopt;
    return entry->second;
  };
  BasicConsent consent(category(rawValue(ConsentCategory::preferences)),
                       category(rawValue(ConsentCategory::statistics)),
                       category(rawValue(ConsentCategory::marketing)), id);
  if (const auto optedIn = category("optedIn")) consent.optedIn = optedIn->isEnabled();
  return consent;
}

}  // namespace TalvoConsentSDK
