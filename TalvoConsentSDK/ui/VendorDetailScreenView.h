#pragma once

// The banner's third screen: one vendor.

#include <functional>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/ScreenContext.h"
#include "TalvoConsentSDK/ui/VendorCatalogue.h"
#include "TalvoConsentSDK/view/AnyView.h"

namespace TalvoConsentSDK {

/// A back control, and below it the secondary-screen components with the vendor's details in place of the
/// tabs. If the customization has no secondary screen, the card says that there are no vendor details.
class VendorDetailScreenView {
 public:
  VendorDetailScreenView(const Services::ServiceGroup& vendorGroup,
                         const BannerCustomization::Customization& customization,
                         VendorCataloguePointer services, ConsentBindings bindings,
                         std::function<void()> onBack, ActionHandler onButtonAction,
                         ActionHandler onLinkAction, VendorDetailHandler onVendorDetailTap,
                         ReportedComponents& reported)
      : vendorGroup_(vendorGroup),
        context_{customization, std::move(onButtonAction), std::move(onLinkAction), reported},
        services_(std::move(services)),
        bindings_(std::move(bindings)),
        onBack_(std::move(onBack)),
        onVendorDetailTap_(std::move(onVendorDetailTap)) {}

  view::AnyView body() const;

 private:
  const Services::ServiceGroup& vendorGroup_;
  const ScreenContext context_;
  const VendorCataloguePointer services_;
  const ConsentBindings bindings_;
  const std::function<void()> onBack_;
  const VendorDetailHandler onVendorDetailTap_;  // not used yet: the screen does not link to other vendors
};

}  // namespace TalvoConsentSDK
