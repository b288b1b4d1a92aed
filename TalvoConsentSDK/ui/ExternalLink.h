#pragma once

// Opens a customization's URLs outside the host.

#include <optional>
#include <string>

#include "TalvoConsentSDK/base/URL.h"

namespace TalvoConsentSDK {

/// Returns the URL that `text` stands for, after adding "https://" if it starts with neither "http://" nor
/// "https://". Returns nullopt if the result is not a valid URL.
std::optional<URL> externalURL(const std::string& text);

/// Opens `externalURL(url)` in a task on the main actor. If that is not a valid URL, prints a line with
/// `link` and `url` instead.
void openExternally(const std::string& link, const std::string& url);

}  // namespace TalvoConsentSDK
