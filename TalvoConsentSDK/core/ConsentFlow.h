#pragma once

// From a choice to a stored and submitted consent: the payloads, and the two ways of sending one.

#include <optional>
#include <string>

#include "TalvoConsentSDK/core/ConsentLedger.h"
#include "TalvoConsentSDK/core/Site.h"
#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK {

/// The payload of a consent that somebody chose; `shown` is the customization that its analytics tell of.
FullConsent explicitPayload(const BasicConsent& consent, const std::optional<BannerCustomization>& shown,
                            std::optional<std::string> userId, std::string siteId);

/// The payload of a consent given without a choice: everything accepted.
FullConsent implicitPayload(std::optional<std::string> userId, std::string siteId);

/// Sends `payload`, as an update or a new consent, and files `consent` once the service has taken it. Throws
/// the client's error, having stored nothing.
Task<ConsentResponse> sendAndFile(SitePointer site, FullConsent payload, ConsentLedger::Decision decision,
                                  BasicConsent consent);

/// What an implicit consent may take the place of.
enum class ImplicitOver { nothing, anyConsent };

/// Sends an implicit consent and stores it, unless somebody has decided while it was under way. One reading
/// of the store says what stands there before. A failure is printed.
Task<void> submitImplicitConsent(SitePointer site, std::optional<std::string> userId, ImplicitOver over);

}  // namespace TalvoConsentSDK
