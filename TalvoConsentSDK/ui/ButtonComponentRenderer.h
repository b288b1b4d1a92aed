#pragma once

// The banner's action buttons.

#include <string>
#include <vector>

#include "TalvoConsentSDK/ui/ComponentRenderer.h"

namespace TalvoConsentSDK {

/// Draws two buttons of equal width and height per row, or one below the other if a word would be split
/// otherwise; an odd last button has a row of its own. All buttons look alike, whatever `color` they have, so
/// that no choice is favoured. Reports the identifier of the tapped button. Buttons without an identifier are
/// not drawn.
class ButtonsComponentRenderer : public ComponentRenderer {
 public:
  ButtonsComponentRenderer(const std::vector<BannerCustomization::ButtonItem>& buttons,
                           const BannerCustomization::Customization& customization,
                           const BannerCustomization::BannerMessages& messages, ActionHandler onAction)
      : ComponentRenderer(customization),
        buttons_(buttons),
        messages_(messages),
        onAction_(std::move(onAction)) {}

  view::AnyView render() const override;

 private:
  view::AnyView buttonView(const BannerCustomization::ButtonItem& item) const;

  const std::vector<BannerCustomization::ButtonItem>& buttons_;
  const BannerCustomization::BannerMessages& messages_;
  const ActionHandler onAction_;
};

}  // namespace TalvoConsentSDK
