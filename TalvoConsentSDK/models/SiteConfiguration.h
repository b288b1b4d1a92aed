#pragma once

// The switches that a site sets on the service.

#include <optional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

struct SiteConfiguration {
  SiteConfiguration() {}

  std::optional<bool> implicitConsent;      // consent is given without being asked for
  std::optional<bool> returnSecondaryView;  // a person who has decided sees the preferences first
};

}  // namespace TalvoConsentSDK
