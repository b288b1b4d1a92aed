#pragma once

// The events a host can listen to. Includes nothing else from this folder, so that the consent records can
// name the events that they raise.

#include <array>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/RawValue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Something that has happened to a consent or to the user's identity.
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
