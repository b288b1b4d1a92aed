#pragma once

// How a submission's end reaches the host: its events, then its completion.

#include <functional>
#include <memory>

#include "TalvoConsentSDK/core/ConsentEventManager.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK {

/// Runs `submission` in the background. On the executor for callbacks, in the order in which submissions end,
/// it then raises the consent's events and `consentSent`, unless it has failed, and calls `completion`.
void announceEnd(Task<ConsentResponse> submission, BasicConsent consent,
                 std::shared_ptr<ConsentEventManager> eventManager, const Platform& platform,
                 std::function<void(Result<ConsentResponse>)> completion);

/// The same, begun when it is awaited. The awaiter goes on after the events.
Task<ConsentResponse> announcedEnd(Task<ConsentResponse> submission, BasicConsent consent,
                                   std::shared_ptr<ConsentEventManager> eventManager, Platform platform);

}  // namespace TalvoConsentSDK
