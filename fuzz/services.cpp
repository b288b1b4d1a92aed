// Compares the index and the groups of a catalogue with a simple implementation of the rules. Parts: the
// catalogue, a category.

#include "TalvoConsentSDK/models/Services.h"

#include <set>

#include "TalvoConsentSDK/models/ServicesByCategory.h"
#include "TalvoConsentSDK/ui/VendorCatalogue.h"

#include "fuzz/Fuzzing.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::fuzzing;

namespace {

using Names = std::vector<std::string>;

// The distinct vendors with services under `key`, in order of appearance.
Names vendorsUnder(const Services& catalogue, const std::string& key) {
  Names names;
  for (const auto& service : catalogue.libraries.value_or(std::vector<Services::Service>())) {
    if (!service.category || !service.vendor || normalizedCategoryKey(*service.category) != key) continue;
    if (std::ranges::find(names, *service.vendor) == names.end()) names.push_back(*service.vendor);
  }
  return names;
}

void checkGroups(const Services& catalogue, const std::string& category, const Names& expected) {
  Names names;
  std::size_t count = 0;
  for (const auto& group : catalogue.groupedByVendor(category)) {
    names.push_back(group.vendor);
    count += group.services.size();
    require(!group.services.empty(), "a group has services");
    require(!group.details.id || group.details.id == group.vendor, "the details are the vendor's");
    for (const auto& service : group.services) {
      require(service.vendor == group.vendor, "a group's services are its vendor's");
      require(normalizedCategoryKey(*service.category) == category, "a group's services are of the category");
    }
  }
  std::size_t filed = 0;
  for (const auto& service : catalogue.libraries.value_or(std::vector<Services::Service>())) {
    if (!service.category || normalizedCategoryKey(*service.category) != category) continue;
    filed += service.vendor && !service.vendor->empty();
  }
  Names sorted = expected;
  std::erase(sorted, "");
  std::ranges::sort(sorted);
  require(names == sorted, "the groups are the category's vendors, sorted");
  require(count == filed, "no service is lost");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const auto decoded = JSONDecoder().decode<Services>(input.text());
  if (!decoded) return 0;
  const ServicesByCategory index(*decoded);
  const VendorCatalogue catalogue(*decoded);
  std::set<std::string> keys{"marketing", normalizedCategoryKey(input.text())};
  for (const auto& [key, vendors] : index.servicesByCategory()) keys.insert(key);
  for (const std::string& key : keys) {
    const Names expected = vendorsUnder(*decoded, key);
    const auto found = index.servicesByCategory().find(key);
    require((found == index.servicesByCategory().end() ? Names() : found->second) == expected, "the index");
    require(catalogue.vendors(key) == expected, "the banner's view of the index");
    if (key.empty()) continue;
    checkGroups(*decoded, key, expected);
    require(catalogue.groups(key).size() == decoded->groupedByVendor(key).size(), "the groups are kept");
  }
  require(decoded->groupedByVendor("").empty() && decoded->groupedByVendor("preference").empty(),
          "nothing is filed under these");
  return 0;
}
