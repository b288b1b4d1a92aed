#include "TalvoConsentSDK/models/ServicesByCategory.h"

#include <set>
#include <string_view>
#include <utility>

namespace TalvoConsentSDK {

ServicesByCategory::ServicesByCategory(Services catalogue) : services_(std::move(catalogue)) {
  if (!services_.libraries) return;
  std::set<std::pair<std::string, std::string_view>> seen;
  for (const Services::Service& service : *services_.libraries) {
    if (!service.category || !service.vendor) continue;
    const auto [entry, isNew] = seen.emplace(normalizedCategoryKey(*service.category), *service.vendor);
    if (isNew) servicesByCategory_[entry->first].push_back(*service.vendor);
  }
}

}  // namespace TalvoConsentSDK
