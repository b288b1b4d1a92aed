#include "TalvoConsentSDK/ui/PreferencesScreenView.h"

#include <optional>

#include "TalvoConsentSDK/ui/CardScreen.h"
#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/Localized.h"
#include "TalvoConsentSDK/ui/Palette.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentSDK {

using namespace view;

AnyView PreferencesScreenView::body() const {
  CardScreen screen(customization_, onButtonAction_, onLinkAction_, reportedComponents_);
  const auto& components = customization_.components;
  if (!components || !components->secondaryScreen) {
    const Palette palette(customization_.colors);
    screen.add(text(localized("No preferences available"), {.color = palette.font}));
    return screen.render();
  }
  screen.addComponents(*components->secondaryScreen,
                       [this](const BannerCustomization::ComponentItem& item) -> std::optional<AnyView> {
                         if (item.id != "tabs" || !ComponentRendererFactory::isComplete(item))
                           return std::nullopt;
                         return TabsComponentRenderer(*item.tabs, customization_,
                                                      customization_.messages.bannerMessages, services_,
                                                      bindings_, onVendorDetailTap_)
                             .render();
                       });
  return screen.render();
}

}  // namespace TalvoConsentSDK
