#include "TalvoConsentSDK/ui/MainScreenView.h"

#include "TalvoConsentSDK/ui/CardScreen.h"

namespace TalvoConsentSDK {

using namespace view;

AnyView MainScreenView::body() const {
  CardScreen screen(context_);
  const auto& components = context_.customization.components;
  if (components && components->mainScreen) screen.addComponents(*components->mainScreen);
  return screen.render();
}

}  // namespace TalvoConsentSDK
