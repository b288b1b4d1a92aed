#pragma once

// The texts that come from the library instead of the service.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

/// Returns the installed platform's text for a key. Returns the key, which is in English, if the platform has
/// no text for it or throws.
std::string localized(std::string_view key);

/// The language of these texts, which may differ from the banner's.
std::string localizedLanguage();

/// Shows a text whose language is told to assistive technology.
view::AnyView localizedText(std::string_view key, const view::TextOptions& options);

}  // namespace TalvoConsentSDK
