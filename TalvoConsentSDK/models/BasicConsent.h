#pragma once

// A person's consent as the host sees it and the device keeps it.

#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/models/ConsentEvent.h"
#include "TalvoConsentSDK/models/ConsentValue.h"
#include "TalvoConsentSDK/models/ConsentVocabulary.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Consent per category. The necessary category is always on and has no field.
struct BasicConsent {
  BasicConsent() {}
  BasicConsent(std::optional<ConsentValue> preferencesConsent, std::optional<ConsentValue> statisticsConsent,
               std::optional<ConsentValue> marketingConsent,
               std::optional<std::string> identifier = std::nullopt,
               std::optional<bool> isOptedIn = std::nullopt);

  std::optional<ConsentValue> preferences;
  std::optional<ConsentValue> statistics;
  std::optional<ConsentValue> marketing;
  std::optional<std::string> id;  // of the consent's record on the service, if known
  std::optional<bool> optedIn;    // whether the user allows the sale of data; absent: never asked

  /// Everything accepted, or everything refused; without `id` and `optedIn`.
  static BasicConsent acceptAll();
  static BasicConsent rejectAll();

  /// Judges the categories that are present: accepted if all of them are `all`, rejected if all of them are
  /// `none` or no category is present, otherwise partial.
  ConsentStatus status() const;

  /// Returns the events that this consent raises, in order.
  std::vector<ConsentEvent> consentEvents() const;
};

}  // namespace TalvoConsentSDK
