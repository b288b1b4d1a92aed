#pragma once

// One vendor's details: who it is, its switch, and what each of its services stores.

#include <string>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"

namespace TalvoConsentSDK {

/// Details without a value are left out. A policy's URL opens outside the host.
class VendorDetailRenderer : public ComponentRenderer {
 public:
  /// `readOnly`: the switch only shows.
  VendorDetailRenderer(const Services::ServiceGroup& vendorGroup, std::string categoryId,
                       const BannerCustomization::Customization& customization, bool readOnly,
                       ConsentBindings bindings)
      : vendorGroup_(vendorGroup),
        categoryId_(std::move(categoryId)),
        customization_(customization),
        readOnly_(readOnly),
        bindings_(std::move(bindings)) {}

  view::AnyView render() const override;

 private:
  const Services::ServiceGroup& vendorGroup_;
  const std::string categoryId_;
  const BannerCustomization::Customization& customization_;
  const bool readOnly_;
  const ConsentBindings bindings_;
};

}  // namespace TalvoConsentSDK
