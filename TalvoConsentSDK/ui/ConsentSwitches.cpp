#include "TalvoConsentSDK/ui/ConsentSwitches.h"

#include <algorithm>
#include <utility>

#include "TalvoConsentSDK/models/ConsentVocabulary.h"

namespace TalvoConsentSDK {

using namespace view;

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

// Whether do-not-sell withholds consent to the category.
bool isWithheld(const ConsentBindings& bindings, const std::string& category) {
  return category != rawValue(ConsentCategory::necessary) && bindings.doNotSellState &&
         bindings.doNotSellState->get();
}

constexpr auto isTrue = [](const auto& entry) { return entry.second; };

using Change = Binding<bool>::Change;

bool changed(bool value, const Change& change) {
  change(value);
  return value;
}

struct CategorySwitch {
  ConsentBindings bindings;
  VendorCataloguePointer catalogue;
  std::string category;

  bool get() const { return isGiven(bindings, category); }

  void update(const Change& change) const {
    const bool value = changed(get(), change);
    switchCategory(bindings, category, value);
    switchVendors(bindings, catalogue, category, value);
  }
};

struct VendorSwitch {
  ConsentBindings bindings;
  std::string category;
  std::string vendor;

  bool get() const {
    return !isWithheld(bindings, category) && isOn(bindings.vendorStates->get(), category, vendor);
  }

  void update(const Change& change) const {
    const bool value = changed(get(), change);
    bindings.vendorStates->update([&](VendorStates& states) { states[category][vendor] = value; });
    if (!bindings.categoryStates) return;
    const auto& vendors = bindings.vendorStates->get().find(category)->second;
    switchCategory(bindings, category, std::ranges::any_of(vendors, isTrue));
  }
};

struct DoNotSellSwitch {
  ConsentBindings bindings;

  bool get() const { return bindings.doNotSellState->get(); }

  void update(const Change& change) const {
    const bool value = changed(get(), change);
    bindings.doNotSellState->set(value);
    if (!value) return;
    using enum ConsentCategory;
    for (const ConsentCategory each : {preferences, statistics, marketing}) {
      const std::string category(rawValue(each));
      switchCategory(bindings, category, false);
      bindings.vendorStates->update([&category](VendorStates& states) {
        for (auto& [vendor, isOn] : states[category]) isOn = false;
      });
    }
  }
};

}  // namespace

bool isOn(const CategoryStates& states, const std::string& key) {
  const auto entry = states.find(key);
  return entry != states.end() && entry->second;
}

bool isOn(const VendorStates& states, const std::string& category, const std::string& vendor) {
  const auto vendors = states.find(category);
  return vendors != states.end() && isOn(vendors->second, vendor);
}

bool isGiven(const ConsentBindings& bindings, const std::string& category) {
  if (isWithheld(bindings, category) || !isOn(bindings.categoryStates->get(), category)) return false;
  const auto& states = bindings.vendorStates->get();
  const auto vendors = states.find(category);
  return vendors == states.end() || vendors->second.empty() || std::ranges::any_of(vendors->second, isTrue);
}

std::size_t countVendorsOn(const ConsentBindings& bindings, const std::string& category,
                           const std::vector<Services::ServiceGroup>& listed) {
  if (isWithheld(bindings, category)) return 0;
  const auto& states = bindings.vendorStates->get();
  const auto vendors = states.find(category);
  if (vendors == states.end()) return 0;
  const auto on = [&](const auto& group) { return isOn(vendors->second, group.vendor); };
  return static_cast<std::size_t>(std::ranges::count_if(listed, on));
}

Binding<bool> categorySwitch(const ConsentBindings& bindings, VendorCataloguePointer catalogue,
                             std::string category) {
  return Binding<bool>(
      std::make_shared<CategorySwitch>(CategorySwitch{bindings, std::move(catalogue), std::move(category)}));
}

Binding<bool> vendorSwitch(const ConsentBindings& bindings, std::string category, std::string vendor) {
  return Binding<bool>(
      std::make_shared<VendorSwitch>(VendorSwitch{bindings, std::move(category), std::move(vendor)}));
}

Binding<bool> doNotSellSwitch(const ConsentBindings& bindings) {
  return Binding<bool>(std::make_shared<DoNotSellSwitch>(DoNotSellSwitch{bindings}));
}

}  // namespace TalvoConsentSDK
