#pragma once

// The services catalogue as the banner uses it: indexed and grouped once, however often its screens are
// drawn.

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/ServicesByCategory.h"

namespace TalvoConsentSDK {

/// Answers what `ServicesByCategory` and `Services::groupedByVendor` would. Main thread only; shared by
/// pointer, and null where the catalogue is absent.
class VendorCatalogue {
 public:
  explicit VendorCatalogue(Services services) : index_(std::move(services)) {}

  /// The vendor names filed under `category`, in lower case; empty when there are none.
  const std::vector<std::string>& vendors(std::string_view category) const;

  /// The category's vendors with their services. Valid as long as the catalogue.
  const std::vector<Services::ServiceGroup>& groups(const std::string& category) const;

 private:
  const ServicesByCategory index_;
  mutable std::map<std::string, std::vector<Services::ServiceGroup>> groups_;
};

using VendorCataloguePointer = std::shared_ptr<const VendorCatalogue>;

}  // namespace TalvoConsentSDK
