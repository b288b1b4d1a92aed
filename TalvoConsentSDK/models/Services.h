#pragma once

// The catalogue of the tracking services that a site uses.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// The catalogue as the service sends it. The services proper are its `libraries`; its `services` are details
/// about vendors.
struct Services {
  struct Service {
    Service() {}

    std::optional<std::string> id;
    std::optional<std::string> name;
    std::optional<std::string> category;
    std::optional<std::string> description;
    std::optional<std::string> version;
    std::optional<std::string> domain;
    std::optional<std::string> vendor;
    std::optional<std::string> fullName;
  };

  /// Details of the vendor whose name is exactly `id`.
  struct SpecificServiceDetails {
    SpecificServiceDetails() {}

    std::optional<std::string> domain;
    std::optional<std::string> description;
    std::optional<std::string> processingCompanyName;
    std::optional<std::string> processingCompanyLocation;
    std::optional<std::string> DTOProbableEmails;
    std::optional<std::string> legalBasis;
    std::optional<std::string> privacyPolicyURL;
    std::optional<std::string> cookiePolicyURL;
    std::optional<std::string> id;
  };

  /// One vendor within one category.
  struct ServiceGroup {
    ServiceGroup() {}

    std::string vendor;              // never empty
    std::vector<Service> services;   // at least one, in catalogue order
    SpecificServiceDetails details;  // every field absent when the catalogue has none
  };

  Services() {}

  std::optional<std::string> model;
  std::optional<std::vector<Service>> libraries;
  std::optional<std::vector<SpecificServiceDetails>> services;

  /// Returns the vendors with services in `category`, sorted by name. `category` is lower-cased but not
  /// otherwise normalized: "preference" finds nothing, because its services are grouped under "preferences".
  std::vector<ServiceGroup> groupedByVendor(std::string_view category) const;
};

/// Returns the key that a category's services are grouped under: the text in lower case, but "preferences"
/// for "preference".
TALVO_EXPORT std::string normalizedCategoryKey(std::string_view category);

}  // namespace TalvoConsentSDK
