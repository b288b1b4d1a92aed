#pragma once

// What a client's background tasks work with. It may outlive the client.

#include <memory>
#include <string>

#include "TalvoConsentSDK/core/ConsentEventManager.h"
#include "TalvoConsentSDK/core/ConsentLedger.h"
#include "TalvoConsentSDK/network/APIClient.h"
#include "TalvoConsentSDK/platform/Executor.h"

namespace TalvoConsentSDK {

/// Safe from any thread.
struct Site {
  const std::string id;
  const std::shared_ptr<APIClient> apiClient;
  const std::shared_ptr<ConsentLedger> ledger;
  const std::shared_ptr<ConsentEventManager> eventManager;
  const std::shared_ptr<platform::Executor> mainActor;
  const std::shared_ptr<platform::Executor> background;
  const std::shared_ptr<platform::Executor> callbacks;
};

using SitePointer = std::shared_ptr<const Site>;

}  // namespace TalvoConsentSDK
