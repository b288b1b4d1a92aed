#pragma once

// The enumerations of consent: its categories, and the status of a consent as a whole.

#include <array>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/RawValue.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A category of cookies and services. Its raw text is its name.
enum class ConsentCategory { necessary, preferences, statistics, marketing, unclassified, doNotSell };

template <>
struct RawValues<ConsentCategory> {
  static constexpr std::array table{
      RawValue<ConsentCategory>{ConsentCategory::necessary, "necessary"},
      RawValue<ConsentCategory>{ConsentCategory::preferences, "preferences"},
      RawValue<ConsentCategory>{ConsentCategory::statistics, "statistics"},
      RawValue<ConsentCategory>{ConsentCategory::marketing, "marketing"},
      RawValue<ConsentCategory>{ConsentCategory::unclassified, "unclassified"},
      RawValue<ConsentCategory>{ConsentCategory::doNotSell, "doNotSell"},
  };
};

/// The status of a consent over all of its categories. Its raw text is its name.
enum class ConsentStatus { accepted, rejected, partial };

template <>
struct RawValues<ConsentStatus> {
  static constexpr std::array table{
      RawValue<ConsentStatus>{ConsentStatus::accepted, "accepted"},
      RawValue<ConsentStatus>{ConsentStatus::rejected, "rejected"},
      RawValue<ConsentStatus>{ConsentStatus::partial, "partial"},
  };
};

}  // namespace TalvoConsentSDK
