#include "TalvoConsentSDK/ui/MainScreenView.h"

#include "TalvoConsentSDK/ui/CardScreen.h"

namespace TalvoConsentSDK {

using namespace view;

AnyView MainScreenView::body() const {
  CardScreen screen(customization_, onButtonAction_, onLinkAction_, reportedComponents_);
  const auto& components = customization_.components;
  if (components && components->mainScreen) screen.addComponents(*components->mainScreen);
  return screen.render();
}

}  // namespace TalvoConsentSDK
