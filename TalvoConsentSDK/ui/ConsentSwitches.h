#pragma once

// What the banner's switches do to its state.

#include <map>
#include <optional>
#include <string>
#include <unordered_map>

#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/ui/view/State.h"

namespace TalvoConsentSDK {

/// On or off by category key, and by category key and vendor name.
using CategoryStates = std::map<std::string, bool, std::less<>>;
using VendorStates = std::map<std::string, std::unordered_map<std::string, bool>, std::less<>>;

/// The banner's state as its rows reach it; a row without a binding can show, but not switch.
struct ConsentBindings {
  std::optional<Binding<CategoryStates>> categoryStates;
  std::optional<Binding<VendorStates>> vendorStates;
  std::optional<Binding<bool>> doNotSellState;
};

/// The state of a category or a vendor; what is not listed is off.
bool isOn(const CategoryStates& states, const std::string& category);
bool isOn(const VendorStates& states, const std::string& category, const std::string& vendor);

/// How many of a category's vendors are on.
std::size_t vendorsOn(const VendorStates& states, const std::string& category,
                      const VendorCatalogue& catalogue);

/// A category's switch. With a catalogue, switching it switches all its vendors. Needs both bindings.
Binding<bool> categorySwitch(const ConsentBindings& bindings, VendorCataloguePointer catalogue,
                             std::string category);

/// A vendor's switch. Its category follows: on while at least one vendor is. Needs `vendorStates`.
Binding<bool> vendorSwitch(const ConsentBindings& bindings, std::string category, std::string vendor);

/// The do-not-sell switch. On, it switches preferences, statistics and marketing off with all their vendors;
/// off, it leaves them as they are. Needs all bindings.
Binding<bool> doNotSellSwitch(const ConsentBindings& bindings, VendorCataloguePointer catalogue);

}  // namespace TalvoConsentSDK
