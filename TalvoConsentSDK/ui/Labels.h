#pragma once

// The texts of buttons and links.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/models/BannerCustomization.h"

namespace TalvoConsentSDK {

/// The label of the button or link with an identifier: its message, the default where that is absent, and for
/// an unknown identifier the identifier in capitalized words.
std::string buttonLabel(const std::string& id, const BannerCustomization::BannerMessages& messages);
std::string linkLabel(const std::string& id, const BannerCustomization::BannerMessages& messages);

/// Whether a link has a label of its own rather than its identifier.
bool isKnownLink(std::string_view id);

/// The key of a link's URL in the customization's `urls`.
std::string linkURLKey(const std::string& link);

}  // namespace TalvoConsentSDK
