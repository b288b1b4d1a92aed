#include "TalvoConsentSDK/ui/PreferencesScreenView.h"

#include "TalvoConsentSDK/ui/CardScreen.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

namespace TalvoConsentSDK {

using namespace view;

AnyView PreferencesScreenView::body() const {
  CardScreen screen(context_);
  const auto& components = context_.customization.components;
  if (!components || !components->secondaryScreen) {
    screen.addText("No preferences available");
    return screen.render();
  }
  screen.addComponents(*components->secondaryScreen, [this](const CardScreen::Tabs& tabs) {
    const auto& customization = context_.customization;
    return TabsComponentRenderer(tabs, customization, customization.messages.bannerMessages, services_,
                                 bindings_, onVendorDetailTap_, doNotSellRequests_)
        .render();
  });
  return screen.render();
}

}  // namespace TalvoConsentSDK
