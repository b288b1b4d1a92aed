#pragma once

// The labels of buttons and links.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/models/BannerCustomization.h"

namespace TalvoConsentSDK {

/// The label of the button or link with this identifier: the site's message, or a default if the site has
/// none. The label of an unknown identifier is the identifier with its words capitalized.
std::string buttonLabel(const std::string& id, const BannerCustomization::BannerMessages& messages);
std::string linkLabel(const std::string& id, const BannerCustomization::BannerMessages& messages);

/// Whether the link is a known one, whose label does not come from its identifier.
bool isKnownLink(std::string_view id);

/// The key of a link's URL in the customization's `urls`.
std::string linkURLKey(const std::string& link);

}  // namespace TalvoConsentSDK
