#pragma once

// The banner's third screen: one vendor.

#include <functional>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

namespace TalvoConsentSDK {

/// The secondary-screen components with the vendor's details in place of the tabs, below a way back. Without
/// that list it says so.
class VendorDetailScreenView {
 public:
  VendorDetailScreenView(const Services::ServiceGroup& vendorGroup,
                         const BannerCustomization::Customization& customization,
                         VendorCataloguePointer services, ConsentBindings bindings,
                         std::function<void()> onBack, ActionHandler onButtonAction,
                         ActionHandler onLinkAction, VendorDetailHandler onVendorDetailTap,
                         ToldComponents& told)
      : vendorGroup_(vendorGroup),
        customization_(customization),
        services_(std::move(services)),
        bindings_(std::move(bindings)),
        onBack_(std::move(onBack)),
        onButtonAction_(std::move(onButtonAction)),
        onLinkAction_(std::move(onLinkAction)),
        onVendorDetailTap_(std::move(onVendorDetailTap)),
        told_(told) {}

  view::AnyView body() const;

 private:
  const Services::ServiceGroup& vendorGroup_;
  const BannerCustomization::Customization& customization_;
  const VendorCataloguePointer services_;
  const ConsentBindings bindings_;
  const std::function<void()> onBack_;
  const ActionHandler onButtonAction_;
  const ActionHandler onLinkAction_;
  const VendorDetailHandler onVendorDetailTap_;  // the page links to no other vendor today
  ToldComponents& told_;
};

}  // namespace TalvoConsentSDK
