#pragma once

// The options that a site sets on the service.

#include <optional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

struct SiteConfiguration {
  SiteConfiguration() {}

  std::optional<bool> implicitConsent;      // submit consent without asking the user
  std::optional<bool> returnSecondaryView;  // show the preferences first to a user who has decided
};

}  // namespace TalvoConsentSDK
