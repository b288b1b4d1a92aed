#pragma once

// The services catalogue as other JSON libraries read it into the same records, as strictly as they can.

#include <string_view>

#include "TalvoConsentSDK/models/Services.h"

namespace TalvoConsentBenchmarks {

/// Each throws on a text that it does not take.
TalvoConsentSDK::Services decodeWithNlohmann(std::string_view text);
TalvoConsentSDK::Services decodeWithRapidJSON(std::string_view text);

}  // namespace TalvoConsentBenchmarks
