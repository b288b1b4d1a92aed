#include "TalvoConsentSDK/models/Services.h"

#include <map>
#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {

std::string normalizedCategoryKey(std::string_view category) {
  std::string key = lowercased(category);
  return key == "preference" ? "preferences" : key;
}

std::vector<Services::ServiceGroup> Services::groupedByVendor(std::string_view category) const {
  if (category.empty() || !libraries) return {};
  const std::string key = lowercased(category);

  std::map<std::string_view, ServiceGroup> byVendor;
  for (const Service& service : *libraries) {
    if (!service.category || normalizedCategoryKey(*service.category) != key) continue;
    if (!service.vendor || service.vendor->empty()) continue;
    byVendor[*service.vendor].services.push_back(service);
  }
  for (std::size_t index = 0; services && index < services->size(); ++index) {
    const SpecificServiceDetails& details = (*services)[index];
    const auto entry = details.id ? byVendor.find(*details.id) : byVendor.end();
    if (entry != byVendor.end()) entry->second.details = details;
  }

  std::vector<ServiceGroup> groups;
  groups.reserve(byVendor.size());
  for (auto& [vendor, group] : byVendor) {
    group.vendor = vendor;
    groups.push_back(std::move(group));
  }
  return groups;
}

}  // namespace TalvoConsentSDK
