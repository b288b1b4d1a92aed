#pragma once

// How a submission's end reaches the host: its events, then its completion.

#include <functional>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/core/Site.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK {

/// Runs `submission` in the background. On the executor for callbacks, in the order in which submissions end,
/// it then raises the consent's events and `consentSent`, unless it has failed, and calls `completion`.
void announceEnd(const SitePointer& site, Task<ConsentResponse> submission, BasicConsent consent,
                 std::function<void(Result<ConsentResponse>)> completion);

/// The same, begun when it is awaited. The awaiter goes on after the events.
Task<ConsentResponse> announcedEnd(SitePointer site, Task<ConsentResponse> submission, BasicConsent consent);

}  // namespace TalvoConsentSDK
