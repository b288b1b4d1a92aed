#include "TalvoConsentSDK/ui/VendorDetailScreenView.h"

#include <algorithm>
#include <string>
#include <utility>

#include "TalvoConsentSDK/models/ConsentVocabulary.h"
#include "TalvoConsentSDK/ui/BasicComponentRenderers.h"
#include "TalvoConsentSDK/ui/CardScreen.h"
#include "TalvoConsentSDK/ui/Localized.h"
#include "TalvoConsentSDK/ui/VendorDetailRenderer.h"

namespace TalvoConsentSDK {

using namespace view;

namespace {

// Whether the category is read-only: the first tab that lists it decides. Searches the tabs of all components
// in order.
bool isReadOnly(const CardScreen::Items& components, const std::string& category) {
  const auto lists = [&](const BannerCustomization::TabItem& tab) {
    return !tab.categories || tab.categories->empty() ||
           std::ranges::find(*tab.categories, category) != tab.categories->end();
  };
  for (const auto& item : components) {
    if (item.id != "tabs" || !item.tabs) continue;
    const auto tab = std::ranges::find_if(*item.tabs, lists);
    if (tab != item.tabs->end()) return tab->readOnly;
  }
  return false;
}

}  // namespace

AnyView VendorDetailScreenView::body() const {
  CardScreen screen(context_);
  // The text of the way back is raised to the same line as the name.
  screen.setHeader(BackButtonRenderer(context_.customization, onBack_).render().padding({.top = -4}),
                   vendorGroup_.vendor);
  const auto& components = context_.customization.components;
  if (!components || !components->secondaryScreen) {
    screen.addText(localized("No vendor details available"));
    return screen.render();
  }

  const std::string category = normalizedCategoryKey(vendorGroup_.services.front().category.value_or(""));
  const bool isRequired = category == rawValue(ConsentCategory::necessary);
  const bool isSwitchDisabled = isRequired || (bindings_.doNotSellState && bindings_.doNotSellState->get()) ||
                                isReadOnly(*components->secondaryScreen, category);
  bool isDrawn = false;
  screen.addComponents(*components->secondaryScreen, [&](const CardScreen::Tabs&) {
    if (std::exchange(isDrawn, true)) return AnyView();
    return VendorDetailRenderer(vendorGroup_, category, context_.customization, isSwitchDisabled, bindings_)
        .render();
  });
  return screen.render();
}

}  // namespace TalvoConsentSDK
