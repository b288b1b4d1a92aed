#pragma once

// How much there is to draw of a banner.

#include "TalvoConsentSDK/models/BannerCustomization.h"

namespace TalvoConsentSDK {

/// Whether the two screens draw more than 4 MB of text, for which a window would stand still for seconds. A
/// text counts as often as it is drawn, and each component, link, button and category as 100 bytes besides.
bool drawsTooMuch(const BannerCustomization::Customization& customization);

}  // namespace TalvoConsentSDK
