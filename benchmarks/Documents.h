#pragma once

// The documents that benchmarks work on: catalogues of any size, and a banner's customization.

#include <cstddef>
#include <string>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/ui/ConsentBannerView.h"

namespace TalvoConsentBenchmarks {

/// A catalogue of `count` services, each of a vendor of its own whose details are given too; about 600 bytes
/// of JSON each. The services spread over the four categories.
TalvoConsentSDK::Services fullCatalogue(std::size_t count);

/// A banner whose marketing category has `vendorCount` vendors, each with one service, on its preferences
/// screen.
TalvoConsentSDK::ConsentBannerView makeBanner(std::size_t vendorCount);

}  // namespace TalvoConsentBenchmarks
