#pragma once

// The documents for benchmarks: catalogues of any size, and a banner's customization.

#include <cstddef>
#include <string>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/ui/ConsentBannerView.h"

namespace TalvoConsentBenchmarks {

/// A catalogue of `count` services, each from a different vendor with details; about 600 bytes of JSON per
/// service. The services are spread over the four categories.
TalvoConsentSDK::Services fullCatalogue(std::size_t count);

/// A banner, on its preferences screen, whose marketing category has `vendorCount` vendors with one service
/// each.
TalvoConsentSDK::ConsentBannerView makeBanner(std::size_t vendorCount);

}  // namespace TalvoConsentBenchmarks
