#pragma once

// What a CookiesSDK holds. Background tasks get copies of what they need of it, never the instance.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TalvoConsentSDK/core/ConsentEventManager.h"
#include "TalvoConsentSDK/core/ConsentObservers.h"
#include "TalvoConsentSDK/core/CookiesSDK.h"
#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/network/APIClient.h"
#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/storage/ConsentStorage.h"

namespace TalvoConsentSDK {

struct CookiesSDK::State {
  State(const std::string& apiUrl, const std::string& site);

  /// Reads once more what the store has failed to give so far. What then still is unknown may be there.
  void loadWhatIsUnknown();

  const Platform platform;
  const std::shared_ptr<APIClient> apiClient;
  const std::string siteId;
  const std::shared_ptr<ConsentObservers> observers;
  const std::shared_ptr<ConsentStorage> storage;
  const std::shared_ptr<ConsentEventManager> eventManager = std::make_shared<ConsentEventManager>();

  std::recursive_mutex lock;  // guards what follows; recursive, since a host's store and printer may call in
  std::optional<BannerCustomization> cachedCustomization;  // the caches are read, never filled
  std::optional<Services> cachedServices;
  std::optional<SiteConfiguration> cachedConfiguration;
  Loaded<BasicConsent> storedConsent;  // as first read; only identify and removeIdentity change it
  std::string language = "en";
  Loaded<std::string> userId;
};

}  // namespace TalvoConsentSDK
