#pragma once

// Reports the end of a submission to the host: first its events, then its completion.

#include <functional>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/core/Site.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK {

/// Runs `submission` in the background. When it ends, raises the consent's events and `consentSent` if it
/// succeeded, and calls `completion` in either case. This happens on the callback executor, in the order in
/// which submissions end.
void announceEnd(const SitePointer& site, Task<ConsentResponse> submission, BasicConsent consent,
                 std::function<void(Result<ConsentResponse>)> completion);

/// The same as a task, which starts when it is awaited and ends after the events.
Task<ConsentResponse> announcedEnd(SitePointer site, Task<ConsentResponse> submission, BasicConsent consent);

}  // namespace TalvoConsentSDK
