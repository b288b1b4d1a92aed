#pragma once

// Decodes the services catalogue into the same records with other JSON libraries, as strictly as they allow.

#include <string_view>

#include "TalvoConsentSDK/models/Services.h"

namespace TalvoConsentBenchmarks {

/// Each throws if the text is not a valid catalogue.
TalvoConsentSDK::Services decodeWithNlohmann(std::string_view text);
TalvoConsentSDK::Services decodeWithRapidJSON(std::string_view text);

}  // namespace TalvoConsentBenchmarks
