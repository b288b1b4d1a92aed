#include "TalvoConsentSDK/ui/VendorDetailScreenView.h"

#include <algorithm>
#include <string>
#include <utility>

#include "TalvoConsentSDK/models/ConsentVocabulary.h"
#include "TalvoConsentSDK/ui/BasicComponentRenderers.h"
#include "TalvoConsentSDK/ui/CardScreen.h"
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
  const auto& components = context_.customization.components;
  const bool hasComponents = components && components->secondaryScreen;
  const std::string category = normalizedCategoryKey(vendorGroup_.services.front().category.value_or(""));
  const bool isRequired = category == rawValue(ConsentCategory::necessary);
  const bool isSwitchDisabled = isRequired || (bindings_.doNotSellState && bindings_.doNotSellState->get()) ||
                                (hasComponents && isReadOnly(*components->secondaryScreen, category));
  const VendorDetailRenderer details(vendorGroup_, category, context_.customization, isSwitchDisabled,
                                     bindings_);
  CardScreen screen(context_);
  screen.setHeader(BackButtonRenderer(context_.customization, onBack_).render(), details.title());
  if (!hasComponents) {
    screen.addText("No vendor details available");
    return screen.render();
  }

  bool isDrawn = false;
  screen.addComponents(*components->secondaryScreen, [&](const CardScreen::Tabs&) {
    return std::exchange(isDrawn, true) ? AnyView() : details.render();
  });
  return screen.render();
}

}  // namespace TalvoConsentSDK
