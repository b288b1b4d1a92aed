#pragma once

// The banner's second screen: the categories with their switches.

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

/// A card with the customization's secondary-screen components. Its tabs receive the catalogue and the
/// bindings. If the customization has no secondary screen, the card says that there are no preferences.
class PreferencesScreenView {
 public:
  PreferencesScreenView(const BannerCustomization::Customization& customization,
                        VendorCataloguePointer services, ConsentBindings bindings,
                        ActionHandler onButtonAction, ActionHandler onLinkAction,
                        VendorDetailHandler onVendorDetailTap, ReportedComponents& reported,
                        int doNotSellRequests)
      : context_{customization, std::move(onButtonAction), std::move(onLinkAction), reported},
        services_(std::move(services)),
        bindings_(std::move(bindings)),
        onVendorDetailTap_(std::move(onVendorDetailTap)),
        doNotSellRequests_(doNotSellRequests) {}

  view::AnyView body() const;

 private:
  const ScreenContext context_;
  const VendorCataloguePointer services_;
  const ConsentBindings bindings_;
  const VendorDetailHandler onVendorDetailTap_;
  const int doNotSellRequests_;
};

}  // namespace TalvoConsentSDK
