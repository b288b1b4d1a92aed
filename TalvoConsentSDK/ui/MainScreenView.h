#pragma once

// The banner's first screen.

#include "TalvoConsentSDK/ui/ComponentRenderer.h"

namespace TalvoConsentSDK {

/// A card with the customization's main-screen components. Holds no state: what is used is reported by its
/// identifier, the close control as "closeButton".
class MainScreenView {
 public:
  MainScreenView(const BannerCustomization::Customization& customization, ActionHandler onButtonAction,
                 ActionHandler onLinkAction, ToldComponents& told)
      : customization_(customization),
        onButtonAction_(std::move(onButtonAction)),
        onLinkAction_(std::move(onLinkAction)),
        told_(told) {}

  view::AnyView body() const;

 private:
  const BannerCustomization::Customization& customization_;
  const ActionHandler onButtonAction_;
  const ActionHandler onLinkAction_;
  ToldComponents& told_;
};

}  // namespace TalvoConsentSDK
