#pragma once

// The state of a CookiesSDK. Background tasks get the site and copies of whatever else they need, never the
// instance.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TalvoConsentSDK/core/ConsentObservers.h"
#include "TalvoConsentSDK/core/CookiesSDK.h"
#include "TalvoConsentSDK/core/Site.h"
#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentSDK {

struct CookiesSDK::State {
  State(const std::string& apiUrl, const std::string& siteId, const Platform& platform);

  const std::shared_ptr<ConsentObservers> observers;
  const SitePointer site;

  std::mutex lock;                                         // guards the members below; held only briefly
  std::optional<BannerCustomization> cachedCustomization;  // nothing ever fills the three caches
  std::optional<Services> cachedServices;
  std::optional<SiteConfiguration> cachedConfiguration;
  std::string language = "en";
};

}  // namespace TalvoConsentSDK
