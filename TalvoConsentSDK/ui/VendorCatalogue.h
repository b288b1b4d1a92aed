#pragma once

// The services catalogue, indexed and grouped once, however often the banner's screens are drawn.

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/ServicesByCategory.h"

namespace TalvoConsentSDK {

/// Returns the same as `ServicesByCategory` and `Services::groupedByVendor`, but caches the groups. Main
/// thread only. Shared by a pointer, which is null if there is no catalogue.
class VendorCatalogue {
 public:
  explicit VendorCatalogue(Services services) : index_(std::move(services)) {}

  /// The names of the vendors in `category` (case-insensitive); empty if there are none.
  const std::vector<std::string>& vendors(std::string_view category) const;

  /// The category's vendors with their services. The reference is valid as long as the catalogue exists.
  const std::vector<Services::ServiceGroup>& groups(const std::string& category) const;

 private:
  const ServicesByCategory index_;
  mutable std::map<std::string, std::vector<Services::ServiceGroup>> groups_;
};

using VendorCataloguePointer = std::shared_ptr<const VendorCatalogue>;

}  // namespace TalvoConsentSDK
