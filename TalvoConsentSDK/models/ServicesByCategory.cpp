#include "TalvoConsentSDK/models/ServicesByCategory.h"

#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace TalvoConsentSDK {

ServicesByCategory::ServicesByCategory(Services catalogue) : services_(std::move(catalogue)) {
  if (!services_.libraries) return;
  std::map<std::string, std::set<std::string_view>> seen;
  for (const Services::Service& service : *services_.libraries) {
    if (!service.category || !service.vendor) continue;
    const std::string key = normalizedCategoryKey(*service.category);
    if (seen[key].insert(*service.vendor).second) servicesByCategory_[key].push_back(*service.vendor);
  }
}

}  // namespace TalvoConsentSDK
