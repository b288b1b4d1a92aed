#include "TalvoConsentSDK/ui/ConsentSwitches.h"

#include <algorithm>
#include <utility>

namespace TalvoConsentSDK {

namespace {

void switchVendors(const ConsentBindings& bindings, const VendorCataloguePointer& catalogue,
                   const std::string& category, bool value) {
  if (!catalogue) return;
  bindings.vendorStates->update([&](VendorStates& states) {
    auto& vendors = states[category];
    for (const std::string& vendor : catalogue->vendors(category)) vendors[vendor] = value;
  });
}

void switchCategory(const ConsentBindings& bindings, const std::string& category, bool value) {
  bindings.categoryStates->update([&](CategoryStates& states) { states[category] = value; });
}

}  // namespace

bool isOn(const CategoryStates& states, const std::string& category) {
  const auto entry = states.find(category);
  return entry != states.end() && entry->second;
}

bool isOn(const VendorStates& states, const std::string& category, const std::string& vendor) {
  const auto vendors = states.find(category);
  if (vendors == states.end()) return false;
  const auto entry = vendors->second.find(vendor);
  return entry != vendors->second.end() && entry->second;
}

std::size_t vendorsOn(const VendorStates& states, const std::string& category,
                      const VendorCatalogue& catalogue) {
  const auto on = [&](const std::string& vendor) { return isOn(states, category, vendor); };
  return static_cast<std::size_t>(std::ranges::count_if(catalogue.vendors(category), on));
}

Binding<bool> categorySwitch(const ConsentBindings& bindings, VendorCataloguePointer catalogue,
                             std::string category) {
  return Binding<bool>::computed(
      [bindings, category] { return isOn(bindings.categoryStates->get(), category); },
      [bindings, catalogue = std::move(catalogue), category](bool value) {
        switchCategory(bindings, category, value);
        switchVendors(bindings, catalogue, category, value);
      });
}

Binding<bool> vendorSwitch(const ConsentBindings& bindings, std::string category, std::string vendor) {
  return Binding<bool>::computed(
      [bindings, category, vendor] { return isOn(bindings.vendorStates->get(), category, vendor); },
      [bindings, category, vendor](bool value) {
        bindings.vendorStates->update([&](VendorStates& states) { states[category][vendor] = value; });
        if (!bindings.categoryStates) return;
        const auto& vendors = bindings.vendorStates->get().find(category)->second;
        const auto isTrue = [](const auto& entry) { return entry.second; };
        switchCategory(bindings, category, std::ranges::count_if(vendors, isTrue) != 0);
      });
}

Binding<bool> doNotSellSwitch(const ConsentBindings& bindings, VendorCataloguePointer catalogue) {
  return Binding<bool>::computed([bindings] { return bindings.doNotSellState->get(); },
                                 [bindings, catalogue = std::move(catalogue)](bool value) {
                                   bindings.doNotSellState->set(value);
                                   if (!value) return;
                                   for (const char* category : {"preferences", "statistics", "marketing"}) {
                                     switchCategory(bindings, category, false);
                                     switchVendors(bindings, catalogue, category, false);
                                   }
                                 });
}

}  // namespace TalvoConsentSDK
