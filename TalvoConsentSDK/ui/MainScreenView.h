#pragma once

// The banner's first screen.

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

/// A card with the customization's main-screen components. Stateless: it reports each tapped control by its
/// identifier, the close control as "closeButton".
class MainScreenView {
 public:
  MainScreenView(const BannerCustomization::Customization& customization, ActionHandler onButtonAction,
                 ActionHandler onLinkAction, ReportedComponents& reported)
      : context_{customization, std::move(onButtonAction), std::move(onLinkAction), reported} {}

  view::AnyView body() const;

 private:
  const ScreenContext context_;
};

}  // namespace TalvoConsentSDK
