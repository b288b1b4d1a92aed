#pragma once

// Estimates how much text a banner draws.

#include "TalvoConsentSDK/models/BannerCustomization.h"

namespace TalvoConsentSDK {

/// Whether the main and the preferences screen together draw more than 4 MB of text, which would freeze a
/// window for seconds. A text counts each time it is drawn; each component, link, button, tab and category
/// adds 100 bytes.
bool drawsTooMuch(const BannerCustomization::Customization& customization);

}  // namespace TalvoConsentSDK
