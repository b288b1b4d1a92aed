// Reads and writes the site configuration and the banner customization.

#include "TalvoConsentSDK/models/json/BannerFields.h"

namespace TalvoConsentSDK {

template const json::Coding& json::codingOf<SiteConfiguration>();
template const json::Coding& json::codingOf<BannerCustomization>();
template const json::Coding& json::codingOf<BannerCustomization::CategoryItem>();

}  // namespace TalvoConsentSDK
