#pragma once

// Opening a customization's URLs outside the host.

#include <string>

namespace TalvoConsentSDK {

/// Opens `url`, with "https://" in front of it when it names neither http nor https, in a task on the main
/// actor. Of one that is no URL a line is printed, naming `link` and the text as it stands.
void openExternally(const std::string& link, const std::string& url);

}  // namespace TalvoConsentSDK
