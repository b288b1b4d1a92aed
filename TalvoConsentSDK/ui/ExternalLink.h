#pragma once

// Opening a customization's URLs outside the host.

#include <optional>
#include <string>

#include "TalvoConsentSDK/base/URL.h"

namespace TalvoConsentSDK {

/// What `text` opens: itself as a URL, with "https://" in front of it when it names neither http nor https.
std::optional<URL> externalURL(const std::string& text);

/// Opens the external URL of `url` in a task on the main actor. Of one that is no URL a line is printed,
/// naming `link` and the text as it stands.
void openExternally(const std::string& link, const std::string& url);

}  // namespace TalvoConsentSDK
