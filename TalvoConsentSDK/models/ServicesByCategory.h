#pragma once

// A catalogue with the index that the banner's switches use.

#include <map>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/models/Services.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A catalogue and, per normalized category key, its distinct vendor names in order of appearance. Immutable;
/// shared by pointer.
class ServicesByCategory {
 public:
  explicit ServicesByCategory(Services catalogue);

  const Services& services() const noexcept { return services_; }
  const std::map<std::string, std::vector<std::string>, std::less<>>& servicesByCategory() const noexcept {
    return servicesByCategory_;
  }

 private:
  const Services services_;
  std::map<std::string, std::vector<std::string>, std::less<>> servicesByCategory_;
};

}  // namespace TalvoConsentSDK
