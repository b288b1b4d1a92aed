#include "TalvoConsentSDK/ui/VendorCatalogue.h"

#include <algorithm>

namespace TalvoConsentSDK {

const std::vector<std::string>& VendorCatalogue::vendors(std::string_view category) const {
  static const std::vector<std::string>& none = *new std::vector<std::string>;
  std::string key(category);
  std::ranges::transform(key, key.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  const auto entry = index_.servicesByCategory().find(key);
  return entry == index_.servicesByCategory().end() ? none : entry->second;
}

const std::vector<Services::ServiceGroup>& VendorCatalogue::groups(const std::string& category) const {
  const auto entry = groups_.find(category);
  if (entry != groups_.end()) return entry->second;
  return groups_.emplace(category, index_.services().groupedByVendor(category)).first->second;
}

}  // namespace TalvoConsentSDK
