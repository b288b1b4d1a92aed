#pragma once

// The texts that come from the library instead of the service.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

/// Returns the installed platform's text for a key. Returns the key, which is in English, if the platform has
/// no text for it or throws.
inline std::string localized(std::string_view key) {
  return platform::askHost(std::string(key), [&] { return Platform::current().localization->text(key); });
}

}  // namespace TalvoConsentSDK
