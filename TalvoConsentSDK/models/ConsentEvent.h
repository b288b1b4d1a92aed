#pragma once

// The events a host can listen to. A leaf, so that consent records can name the events they announce.

#include <array>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/RawValue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// What became of a consent or an identity.
enum class ConsentEvent {
  acceptAll,
  rejectAll,
  marketingAccepted,
  statisticsAccepted,
  preferenceAccepted,
  consentSent,
  identificationComplete,
};

template <>
struct RawValues<ConsentEvent> {
  static constexpr std::array table{
      RawValue<ConsentEvent>{ConsentEvent::acceptAll, "AcceptAll"},
      RawValue<ConsentEvent>{ConsentEvent::rejectAll, "RejectAll"},
      RawValue<ConsentEvent>{ConsentEvent::marketingAccepted, "MarketingAccepted"},
      RawValue<ConsentEvent>{ConsentEvent::statisticsAccepted, "StatisticsAccepted"},
      RawValue<ConsentEvent>{ConsentEvent::preferenceAccepted, "PreferenceAccepted"},
      RawValue<ConsentEvent>{ConsentEvent::consentSent, "ConsentSent"},
      RawValue<ConsentEvent>{ConsentEvent::identificationComplete, "IdentificationComplete"},
  };
};

}  // namespace TalvoConsentSDK
