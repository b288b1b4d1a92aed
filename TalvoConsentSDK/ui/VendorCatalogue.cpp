#include "TalvoConsentSDK/ui/VendorCatalogue.h"

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/base/NeverDestroyed.h"

namespace TalvoConsentSDK {

const std::vector<std::string>& VendorCatalogue::vendors(std::string_view category) const {
  static const auto& none = neverDestroyed<std::vector<std::string>>();
  const auto entry = index_.servicesByCategory().find(lowercased(category));
  return entry == index_.servicesByCategory().end() ? none : entry->second;
}

const std::vector<Services::ServiceGroup>& VendorCatalogue::groups(const std::string& category) const {
  const auto entry = groups_.find(category);
  if (entry != groups_.end()) return entry->second;
  return groups_.emplace(category, index_.services().groupedByVendor(category)).first->second;
}

}  // namespace TalvoConsentSDK
