#pragma once

// The banner's own texts, which do not come from the service.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

/// The installed platform's text for a key; without a table, or when that throws, the key itself, which is
/// English.
inline std::string localized(std::string_view key) {
  return platform::askHost(std::string(key), [&] { return Platform::current().localization->text(key); });
}

}  // namespace TalvoConsentSDK
