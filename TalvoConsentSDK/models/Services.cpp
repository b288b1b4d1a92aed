#include "TalvoConsentSDK/models/Services.h"

#include <algorithm>
#include <unordered_map>

#include "TalvoConsentSDK/platform/ASCII.h"

namespace TalvoConsentSDK {

namespace {

using Service = Services::Service;
using Details = Services::SpecificServiceDetails;

std::unordered_map<std::string_view, const Details*> detailsById(
    const std::optional<std::vector<Details>>& details) {
  std::unordered_map<std::string_view, const Details*> byId;
  if (!details) return byId;
  for (const Details& each : *details) {
    if (each.id && !each.id->empty()) byId[*each.id] = &each;
  }
  return byId;
}

}  // namespace

std::string normalizedCategoryKey(std::string_view category) {
  std::string key = lowercased(category);
  return key == "preference" ? "preferences" : key;
}

std::vector<Services::ServiceGroup> Services::groupedByVendor(std::string_view category) const {
  if (category.empty() || !libraries) return {};
  const std::string key = lowercased(category);

  std::vector<std::string_view> vendorNames;
  std::unordered_map<std::string_view, std::vector<const Service*>> servicesByVendor;
  for (const Service& service : *libraries) {
    if (!service.category || normalizedCategoryKey(*service.category) != key) continue;
    if (!service.vendor || service.vendor->empty()) continue;
    auto& ofVendor = servicesByVendor[*service.vendor];
    if (ofVendor.empty()) vendorNames.push_back(*service.vendor);
    ofVendor.push_back(&service);
  }
  std::ranges::sort(vendorNames);

  const auto detailsByVendor = detailsById(services);
  std::vector<ServiceGroup> groups;
  groups.reserve(vendorNames.size());
  for (const std::string_view vendor : vendorNames) {
    ServiceGroup& group = groups.emplace_back();
    group.vendor = vendor;
    for (const Service* service : servicesByVendor[vendor]) group.services.push_back(*service);
    if (const auto details = detailsByVendor.find(vendor); details != detailsByVendor.end()) {
      group.details = *details->second;
    }
  }
  return groups;
}

}  // namespace TalvoConsentSDK
