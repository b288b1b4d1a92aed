#pragma once

// Turns a choice into a submitted and stored consent: builds the payload, and sends explicit and implicit
// consents.

#include <optional>
#include <string>

#include "TalvoConsentSDK/core/ConsentLedger.h"
#include "TalvoConsentSDK/core/Site.h"
#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK {

/// Returns the payload of a consent that the user chose. Its analytics describe the banner `shown`, if given.
FullConsent explicitPayload(const BasicConsent& consent, const std::optional<BannerCustomization>& shown,
                            std::optional<std::string> userId, std::string siteId);

/// Returns the payload of an implicit consent, which accepts everything.
FullConsent implicitPayload(std::optional<std::string> userId, std::string siteId);

/// Sends `payload` as a new consent or as an update, and files `consent` in the ledger once the service has
/// accepted it. If sending fails, stores nothing and throws the API client's error.
Task<ConsentResponse> sendAndFile(SitePointer site, FullConsent payload, ConsentLedger::Decision decision,
                                  BasicConsent consent);

/// What an implicit submission does when a consent is stored already.
enum class IfConsentStored { keep, replace };

/// Sends an implicit consent. Once the service has accepted it, stores it, unless the user has decided or the
/// stored consent has changed in the meantime. Sends nothing if the store cannot be read or, with `keep`, if
/// a consent is stored already. A failure is printed.
Task<void> submitImplicitConsent(SitePointer site, std::optional<std::string> userId,
                                 IfConsentStored ifStored);

}  // namespace TalvoConsentSDK
