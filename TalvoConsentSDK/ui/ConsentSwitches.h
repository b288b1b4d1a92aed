#pragma once

// What the banner's switches do to its state.

#include <map>
#include <optional>
#include <string>

#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/view/State.h"

namespace TalvoConsentSDK {

/// On or off by category key, and by category key and vendor name.
using CategoryStates = std::map<std::string, bool, std::less<>>;
using VendorStates = std::map<std::string, CategoryStates, std::less<>>;

/// The banner's state as its rows reach it; a row without a binding can show, but not switch.
struct ConsentBindings {
  std::optional<view::Binding<CategoryStates>> categoryStates;
  std::optional<view::Binding<VendorStates>> vendorStates;
  std::optional<view::Binding<bool>> doNotSellState;
};

/// The state of a category or a vendor; what is not listed is off.
bool isOn(const CategoryStates& states, const std::string& category);
bool isOn(const VendorStates& states, const std::string& category, const std::string& vendor);

/// Whether saving would give consent to anything of a category: it is on, unless it has vendors of which none
/// is. Do-not-sell, while it is on, leaves consent to nothing but what is necessary.
bool isGiven(const ConsentBindings& bindings, const std::string& category);

/// How many of the vendors that a category lists are drawn on. Needs `vendorStates`.
std::size_t vendorsOn(const ConsentBindings& bindings, const std::string& category,
                      const std::vector<Services::ServiceGroup>& listed);

/// A category's switch, drawn on while consent to it is given. With a catalogue, switching it switches all
/// its vendors. Needs both states.
view::Binding<bool> categorySwitch(const ConsentBindings& bindings, VendorCataloguePointer catalogue,
                                   std::string category);

/// A vendor's switch, off under do-not-sell. Its category follows: on while at least one vendor is. Needs
/// `vendorStates`.
view::Binding<bool> vendorSwitch(const ConsentBindings& bindings, std::string category, std::string vendor);

/// The do-not-sell switch. On, it switches preferences, statistics and marketing off with all their vendors;
/// off, it leaves them as they are. Needs all bindings.
view::Binding<bool> doNotSellSwitch(const ConsentBindings& bindings);

}  // namespace TalvoConsentSDK
