#pragma once

// The banner's action buttons.

#include <string>
#include <vector>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"

namespace TalvoConsentSDK {

/// Rows of two equally wide buttons, an odd last one alone. All look alike, whatever their own `color` says,
/// so that no choice is favoured. Reports the identifier of the button that was tapped; one without is not
/// drawn.
class ButtonsComponentRenderer : public ComponentRenderer {
 public:
  ButtonsComponentRenderer(const std::vector<BannerCustomization::ButtonItem>& buttons,
                           const BannerCustomization::Customization& customization,
                           const BannerCustomization::BannerMessages& messages, ActionHandler onAction)
      : buttons_(buttons),
        customization_(customization),
        messages_(messages),
        onAction_(std::move(onAction)) {}

  view::AnyView render() const override;

 private:
  view::AnyView buttonView(const BannerCustomization::ButtonItem& item) const;

  const std::vector<BannerCustomization::ButtonItem>& buttons_;
  const BannerCustomization::Customization& customization_;
  const BannerCustomization::BannerMessages& messages_;
  const ActionHandler onAction_;
};

}  // namespace TalvoConsentSDK
