#pragma once

// A consent as the service stores it.

#include <map>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentValue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// How the banner looked when the choice was made.
struct ConsentDataAnalytics {
  ConsentDataAnalytics() {}

  std::optional<std::string> bannerType;
  std::optional<std::string> positioning;
  std::optional<bool> blurred;
  std::optional<bool> poweredBy;
};

/// The payload sent to and fetched from the service.
struct FullConsent {
  FullConsent() {}

  std::optional<std::string> status;  // raw value of a ConsentStatus
  std::optional<std::map<std::string, ConsentValue, std::less<>>> categories;
  std::optional<ConsentDataAnalytics> consentDataAnalytics;
  std::optional<std::string> typeConsent;  // "explicit" or "implicit"
  std::optional<std::string> userId;
  std::optional<std::string> id;
  std::optional<std::string> siteId;

  /// Returns the part that a host sees.
  BasicConsent toBasicConsent() const;
};

}  // namespace TalvoConsentSDK
