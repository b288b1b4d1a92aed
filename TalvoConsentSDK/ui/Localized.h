#pragma once

// The banner's own texts, which do not come from the service.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentSDK {

/// The installed platform's text for a key; without a table the key itself, which is English.
inline std::string localized(std::string_view key) {
  return Platform::current().localization->text(key);
}

}  // namespace TalvoConsentSDK
