#pragma once

// How the banner's switches change its state.

#include <map>
#include <optional>
#include <string>

#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/view/State.h"

namespace TalvoConsentSDK {

/// Whether each category is on, by category key; or each vendor of one category, by vendor name.
using CategoryStates = std::map<std::string, bool, std::less<>>;
/// Whether each vendor is on, by category key and then by vendor name.
using VendorStates = std::map<std::string, CategoryStates, std::less<>>;

/// The rows' access to the banner's state. A category's switch needs all three bindings, a vendor's
/// switch only `vendorStates`; a switch that lacks one is disabled.
struct ConsentBindings {
  std::optional<view::Binding<CategoryStates>> categoryStates;
  std::optional<view::Binding<VendorStates>> vendorStates;
  std::optional<view::Binding<bool>> doNotSellState;
};

/// Whether a category or a vendor is on; if it is not listed, it is off.
bool isOn(const CategoryStates& states, const std::string& key);
bool isOn(const VendorStates& states, const std::string& category, const std::string& vendor);

/// Whether saving would give consent to anything in a category. The category must be on and, if it has
/// vendors, at least one vendor must be on. While do-not-sell is on, only the necessary category has consent.
/// Requires `categoryStates` and `vendorStates`.
bool isGiven(const ConsentBindings& bindings, const std::string& category);

/// Counts the vendors in `listed` whose switch is shown as on. Requires `vendorStates`.
std::size_t countVendorsOn(const ConsentBindings& bindings, const std::string& category,
                           const std::vector<Services::ServiceGroup>& listed);

/// A category's switch, shown as on while `isGiven`. With a catalogue, switching it switches all its vendors.
/// Requires `categoryStates` and `vendorStates`.
view::Binding<bool> categorySwitch(const ConsentBindings& bindings, VendorCataloguePointer catalogue,
                                   std::string category);

/// A vendor's switch, shown as off while do-not-sell is on. Switching it also switches the category: on if at
/// least one of its vendors is on, off otherwise. Requires `vendorStates`.
view::Binding<bool> vendorSwitch(const ConsentBindings& bindings, std::string category, std::string vendor);

/// The do-not-sell switch. Switching it on switches off preferences, statistics and marketing with all their
/// vendors; switching it off leaves them as they are. Requires all bindings.
view::Binding<bool> doNotSellSwitch(const ConsentBindings& bindings);

}  // namespace TalvoConsentSDK
