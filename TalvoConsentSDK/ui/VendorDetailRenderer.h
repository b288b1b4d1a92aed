#pragma once

// One vendor's details: its name and switch, the company behind it, and what each of its services stores.

#include <string>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/ConsentSwitches.h"

namespace TalvoConsentSDK {

/// Omits details that have no value. The URL of the privacy policy opens outside the host.
class VendorDetailRenderer : public ComponentRenderer {
 public:
  /// `readOnly` disables the switch.
  VendorDetailRenderer(const Services::ServiceGroup& vendorGroup, std::string categoryId,
                       const BannerCustomization::Customization& customization, bool readOnly,
                       ConsentBindings bindings)
      : ComponentRenderer(customization),
        vendorGroup_(vendorGroup),
        categoryId_(std::move(categoryId)),
        readOnly_(readOnly),
        bindings_(std::move(bindings)) {}

  /// The vendor's name as a heading, with the vendor's switch.
  view::AnyView title() const;

  /// The details, without the title.
  view::AnyView render() const override;

 private:
  const Services::ServiceGroup& vendorGroup_;
  const std::string categoryId_;
  const bool readOnly_;
  const ConsentBindings bindings_;
};

}  // namespace TalvoConsentSDK
